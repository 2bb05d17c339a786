// Private heaps.
#pragma once

#include <windef.h>

inline constexpr DWORD HEAP_NO_SERIALIZE = 1;   // the caller guards the heap
inline constexpr DWORD HEAP_ZERO_MEMORY = 8;
inline constexpr DWORD HEAP_REALLOC_IN_PLACE_ONLY = 16;

// A heap that grows without limit when cbMaximum is 0, and never beyond it otherwise.
HANDLE HeapCreate(DWORD dwOptions, SIZE_T cbInitial, SIZE_T cbMaximum);
BOOL HeapDestroy(HANDLE hHeap);   // frees all of its blocks; fails on the process heap
LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T cb);
// The block may move. On failure the old one stays. With HEAP_ZERO_MEMORY what is added is 0. A null block is refused.
LPVOID HeapReAlloc(HANDLE hHeap, DWORD dwFlags, LPVOID p, SIZE_T cb);
BOOL HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID p);      // null is accepted
SIZE_T HeapSize(HANDLE hHeap, DWORD dwFlags, LPCVOID p);   // bytes as asked for; SIZE_T(-1) on failure
HANDLE GetProcessHeap();
