#include "platform/thread_language.h"

// No text of the system's own is shown natively, so the locale is all that a thread's language decides.
bool SetThreadLanguage(LANGID language)
{
    return SetThreadLocale(MAKELCID(language, SORT_DEFAULT));
}
