#include "tools/interruption.h"

#include "tools/system.h"

#include <csignal>
#include <cstdlib>

namespace {

volatile std::sig_atomic_t noted = 0;

void Note(int signal)
{
    noted = signal;
}

}   // namespace

void CatchInterruptions()
{
    NoteInterruptions(&Note);
}

int Interruption()
{
    return noted;
}

void EndBy(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal);
}
