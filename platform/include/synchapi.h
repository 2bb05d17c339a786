// Critical sections, which are recursive, and what waits inside them. Both belong to the process.
#pragma once

#include <windef.h>

#include <pthread.h>

struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

void InitializeCriticalSection(CRITICAL_SECTION* pSection);
void EnterCriticalSection(CRITICAL_SECTION* pSection);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* pSection);
void LeaveCriticalSection(CRITICAL_SECTION* pSection);
void DeleteCriticalSection(CRITICAL_SECTION* pSection);

struct CONDITION_VARIABLE {
    pthread_cond_t condition;
};
// A condition variable needs no end. Sleeping leaves the section, which the thread has entered once, and enters it again.
// FALSE with ERROR_TIMEOUT when the time is over; a wake without cause is possible.
void InitializeConditionVariable(CONDITION_VARIABLE* pCondition);
BOOL SleepConditionVariableCS(CONDITION_VARIABLE* pCondition, CRITICAL_SECTION* pSection, DWORD dwMilliseconds);
void WakeConditionVariable(CONDITION_VARIABLE* pCondition);
void WakeAllConditionVariable(CONDITION_VARIABLE* pCondition);

void Sleep(DWORD dwMilliseconds);
