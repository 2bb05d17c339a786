// Whether memory can be read, without reading it in this thread's own name: the kernel copies one byte a page and
// reports a bad address instead of ending the process.
#include <winbase.h>

#include <sys/uio.h>
#include <unistd.h>

namespace {

bool CanRead(uintptr_t address)
{
    BYTE byte;
    const iovec to = {&byte, 1}, from = {reinterpret_cast<void*>(address), 1};
    return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == 1;
}

}   // namespace

BOOL IsBadReadPtr(LPCVOID p, UINT_PTR cb)
{
    if (cb == 0)
        return FALSE;
    const uintptr_t first = reinterpret_cast<uintptr_t>(p), last = first + cb - 1;
    if (!p || last < first)
        return TRUE;
    const uintptr_t page = uintptr_t(sysconf(_SC_PAGESIZE));
    for (uintptr_t address = first;;) {
        if (!CanRead(address))
            return TRUE;
        const uintptr_t next = (address / page + 1) * page;
        if (next == 0 || next > last)
            return FALSE;
        address = next;
    }
}
