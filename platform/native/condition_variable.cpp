#include <synchapi.h>
#include <winbase.h>
#include <winerror.h>

#include <cerrno>
#include <ctime>

namespace {

timespec After(DWORD milliseconds)
{
    timespec when{};
    clock_gettime(CLOCK_MONOTONIC, &when);
    const long nanoseconds = when.tv_nsec + long(milliseconds % 1000) * 1'000'000;
    when.tv_sec += time_t(milliseconds / 1000) + nanoseconds / 1'000'000'000;
    when.tv_nsec = nanoseconds % 1'000'000'000;
    return when;
}

}   // namespace

void InitializeConditionVariable(CONDITION_VARIABLE* pCondition)
{
    pthread_condattr_t monotonic;
    pthread_condattr_init(&monotonic);
    pthread_condattr_setclock(&monotonic, CLOCK_MONOTONIC);
    pthread_cond_init(&pCondition->condition, &monotonic);
    pthread_condattr_destroy(&monotonic);
}

BOOL SleepConditionVariableCS(CONDITION_VARIABLE* pCondition, CRITICAL_SECTION* pSection, DWORD dwMilliseconds)
{
    if (dwMilliseconds == INFINITE)
        return pthread_cond_wait(&pCondition->condition, &pSection->mutex) == 0;
    const timespec when = After(dwMilliseconds);
    if (pthread_cond_timedwait(&pCondition->condition, &pSection->mutex, &when) != ETIMEDOUT)
        return TRUE;
    SetLastError(ERROR_TIMEOUT);
    return FALSE;
}

void WakeConditionVariable(CONDITION_VARIABLE* pCondition)
{
    pthread_cond_signal(&pCondition->condition);
}

void WakeAllConditionVariable(CONDITION_VARIABLE* pCondition)
{
    pthread_cond_broadcast(&pCondition->condition);
}
