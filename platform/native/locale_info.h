// What a locale says about numbers, shared by the calls that give it out and those that use it.
#pragma once

#include "platform/native/wide_text.h"

#include <winnls.h>

#include <optional>

// An item as text, without any flag in the type; nothing for a locale or an item that is not known.
std::optional<WideString> LocaleItem(LCID lcid, LCTYPE type);
