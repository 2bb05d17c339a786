#include "tools/system.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

// Read-only, so that writing to a stream that was closed fails rather than going nowhere.
void HoldStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDONLY);   // takes the lowest number that is free
}

std::vector<std::string> Arguments(int argc, char** argv)
{
    return {argv + (argc > 0), argv + argc};
}

int CreateNewFile(const std::string& path)
{
    return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

void NoteInterruptions(void (*note)(int signal))
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, note) == SIG_IGN)   // nohup and the like stay in force
            std::signal(signal, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool MessagesAreWatched()
{
    return isatty(STDERR_FILENO);
}
