// Where lists get memory from: one table, so that a test can let any single allocation fail.
#pragma once

#include <windows.h>

#include <cstddef>

struct ListMemory {
    void* (*allocHeader)(size_t cb);                                         // zeroed; runtime's heap
    void* (*allocSlots)(size_t cb);                                          // zeroed; global heap
    HANDLE (*createHeap)();                                                  // unserialised, grows without limit
    void* (*allocItem)(HANDLE hHeap, DWORD dwFlags, size_t cb);              // zeroed; hHeap null: runtime's heap
    void* (*reallocItem)(HANDLE hHeap, DWORD dwFlags, void* p, size_t cb);   // null leaves p as it was
};

extern const ListMemory kPlatformListMemory;

// In force for all lists. Set by tests alone, while no list is in use.
extern const ListMemory* g_pListMemory;

// What frees never fails, so that it is not in the table.
void FreeListHeader(void* p);
void FreeSlots(void* p);
void FreeItem(HANDLE hHeap, DWORD dwFlags, void* p);
size_t ItemSize(HANDLE hHeap, DWORD dwFlags, void* p);
