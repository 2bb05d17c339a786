#include "tools/interruption.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t noted = 0;

void Note(int signal)
{
    noted = signal;
}

}   // namespace

void CatchInterruptions()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, &Note) == SIG_IGN)   // nohup and the like stay in force
            std::signal(signal, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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
