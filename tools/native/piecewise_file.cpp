#include "tools/native/piecewise_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int64_t kPiece = 256 * 1024;   // bytes; pieces end at its multiples

}   // namespace

PiecewiseFile::PiecewiseFile(int theDescriptor)
    : descriptor(theDescriptor), piece(std::make_unique_for_overwrite<char[]>(size_t(kPiece)))
{
}

SF_VIRTUAL_IO PiecewiseFile::Calls()
{
    SF_VIRTUAL_IO calls{};
    calls.get_filelen = [](void* p) { return sf_count_t(static_cast<PiecewiseFile*>(p)->length); };
    calls.seek = [](sf_count_t offset, int whence, void* p) {
        return static_cast<PiecewiseFile*>(p)->Seek(offset, whence);
    };
    calls.read = [](void*, sf_count_t, void*) { return sf_count_t(0); };
    calls.write = [](const void* bytes, sf_count_t count, void* p) {
        return static_cast<PiecewiseFile*>(p)->Write(static_cast<const char*>(bytes), count);
    };
    calls.tell = [](void* p) {
        const auto file = static_cast<PiecewiseFile*>(p);
        return sf_count_t(file->start + file->fill);
    };
    return calls;
}

sf_count_t PiecewiseFile::Seek(sf_count_t offset, int whence)
{
    const int64_t from = whence == SEEK_SET ? 0 : whence == SEEK_END ? length : start + fill;
    if (from + offset != start + fill && Flush())
        start = from + offset;
    return start + fill;
}

sf_count_t PiecewiseFile::Write(const char* bytes, sf_count_t count)
{
    for (sf_count_t done = 0; done < count;) {
        const int64_t room = kPiece - start % kPiece - fill;
        const int64_t part = std::min<int64_t>(room, count - done);
        std::memcpy(piece.get() + fill, bytes + done, size_t(part));
        fill += part;
        done += part;
        length = std::max(length, start + fill);
        if (part == room && !Flush())
            return 0;
    }
    return count;
}

bool PiecewiseFile::Flush()
{
    for (int64_t done = 0; done < fill && !error;) {
        const ssize_t written = pwrite(descriptor, piece.get() + done, size_t(fill - done), start + done);
        if (written >= 0)
            done += written;
        else if (errno != EINTR)
            error = errno;
    }
    start += fill;
    fill = 0;
    return !error;
}

bool PiecewiseFile::Finish()
{
    if (Flush() && fsync(descriptor) != 0)
        error = errno;
    return !error;
}
