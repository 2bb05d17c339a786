#include "platform/thread_language.h"

#include <commctrl.h>

bool SetThreadLanguage(LANGID language)
{
    if (!SetThreadLocale(MAKELCID(language, SORT_DEFAULT)))
        return false;
    InitMUILanguage(language);
    WCHAR name[LOCALE_NAME_MAX_LENGTH + 1] = {};   // a list of one, ended twice
    if (LCIDToLocaleName(language, name, LOCALE_NAME_MAX_LENGTH, 0) > 0)
        SetThreadPreferredUILanguages(MUI_LANGUAGE_NAME, name, nullptr);
    SetThreadUILanguage(language);
    return true;
}
