#include <synchapi.h>

#include <chrono>
#include <thread>

void InitializeCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&pSection->mutex, &recursive);
    pthread_mutexattr_destroy(&recursive);
}

void EnterCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_lock(&pSection->mutex);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* pSection)
{
    return pthread_mutex_trylock(&pSection->mutex) == 0;
}

void LeaveCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_unlock(&pSection->mutex);
}

void DeleteCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_destroy(&pSection->mutex);
}

void Sleep(DWORD dwMilliseconds)
{
    if (dwMilliseconds == 0)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(dwMilliseconds));
}
