// Locale ids and the names that the locale library knows them by.
#pragma once

#include <winnls.h>

#include <string>

LCID ResolveLocale(LCID lcid);       // the defaults (0x0400, 0x0800, 0) become the user's or the system's
std::string LocaleName(LCID lcid);   // "de_DE"; empty for a locale that is not known
UINT AnsiCodePage(LCID lcid);
