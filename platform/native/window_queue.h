// The messages that wait for the windows of each thread.
#pragma once

#include <winuser.h>

// False when the queue of the thread is full.
bool QueueMessage(DWORD threadId, const MSG& message);
// Takes what waits for a window out of its thread's queue.
void DropMessages(DWORD threadId, HWND hwnd);
