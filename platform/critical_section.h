// A recursive lock of the platform that goes with std::scoped_lock.
#pragma once

#include <windows.h>

class CriticalSection {
public:
    CriticalSection() { InitializeCriticalSection(&section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    ~CriticalSection() { DeleteCriticalSection(&section); }

    void lock() { EnterCriticalSection(&section); }
    void unlock() { LeaveCriticalSection(&section); }
    bool try_lock() { return TryEnterCriticalSection(&section) != FALSE; }

private:
    CRITICAL_SECTION section;
};
