// A lock that a thread can sleep in until another has changed what it guards. Goes with std::scoped_lock.
#pragma once

#include <windows.h>

class Monitor {
public:
    Monitor()
    {
        InitializeCriticalSection(&section);
        InitializeConditionVariable(&changed);
    }
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    ~Monitor() { DeleteCriticalSection(&section); }

    void lock() { EnterCriticalSection(&section); }
    void unlock() { LeaveCriticalSection(&section); }

    // The thread has locked once. False when the time is over; a wake says no more than "look again".
    bool Wait(DWORD milliseconds = INFINITE)
    {
        return SleepConditionVariableCS(&changed, &section, milliseconds) != FALSE;
    }
    void WakeOne() { WakeConditionVariable(&changed); }
    void WakeAll() { WakeAllConditionVariable(&changed); }

private:
    CRITICAL_SECTION section;
    CONDITION_VARIABLE changed;
};
