#include "tools/standard_output.h"

#include "tools/failure.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

// Read-only, so that writing to a stream that was closed fails rather than going nowhere.
void HoldStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDONLY);   // takes the lowest number that is free
}

void Print(std::string_view text)
{
    const bool whole = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) != 0 || !whole)
        throw DataFailure("standard output: cannot write");
}
