// Environment variables of the program under test.
#pragma once

#include <cstdlib>
#include <string>

// Null takes the variable away.
inline void SetEnvironment(const char* name, const char* value)
{
#ifdef _WIN32
    _putenv_s(name, value ? value : "");
#else
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
#endif
}
