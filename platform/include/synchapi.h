// Critical sections. They are recursive, and belong to the process.
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

void Sleep(DWORD dwMilliseconds);
