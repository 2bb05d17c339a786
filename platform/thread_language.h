// The language of the calling thread.
#pragma once

#include <windows.h>

// Makes language the thread's locale, and its first choice for the user interface where the system has such a choice.
// False when the language is not known; nothing changes then.
bool SetThreadLanguage(LANGID language);
