#include "tools/standard_output.h"

#include "tools/failure.h"

#include <cstdio>

void Print(std::string_view text)
{
    const bool whole = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) != 0 || !whole)
        throw DataFailure("standard output: cannot write");
}
