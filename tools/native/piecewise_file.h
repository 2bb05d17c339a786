// What the audio file library writes to: a descriptor that gets its bytes in pieces of a size that file systems keep
// together in their cache. In the few kilobytes that the library writes at once they cost several times as much.
#pragma once

#include <cstdint>
#include <memory>
#include <sndfile.h>

class PiecewiseFile {
public:
    explicit PiecewiseFile(int theDescriptor);   // of an empty file, open for writing; stays the caller's

    // Calls of the library with this object as their data; the file is written, not read.
    static SF_VIRTUAL_IO Calls();
    // Hands all bytes to the system and on to the disk. False when that, or a write before it, failed.
    bool Finish();
    int Error() const { return error; }   // errno of the first write that failed, or 0

private:
    sf_count_t Seek(sf_count_t offset, int whence);
    sf_count_t Write(const char* bytes, sf_count_t count);
    bool Flush();

    int descriptor;
    int error = 0;
    std::unique_ptr<char[]> piece;
    int64_t start = 0;    // of the piece in the file
    int64_t fill = 0;     // bytes of it; what is written next follows them
    int64_t length = 0;   // of the file, with the piece
};
