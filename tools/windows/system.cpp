#include "tools/system.h"

#include "tools/utf8_path.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include <shellapi.h>

namespace {

std::string ToUtf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(size > 0 ? size_t(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    utf8.pop_back();   // the terminator
    return utf8;
}

}   // namespace

// The runtime keeps the numbers of streams that were closed.
void HoldStandardStreams() {}

// Those of main are in the code page of the system, which has no room for most file names.
std::vector<std::string> Arguments(int, char**)
{
    int count = 0;
    wchar_t** const all = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; all && i < count; ++i)
        arguments.push_back(ToUtf8(all[i]));
    LocalFree(all);
    return arguments;
}

int CreateNewFile(const std::string& path)
{
    int descriptor = -1;
    const errno_t error =
        _wsopen_s(&descriptor, Utf8Path(path).c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                  _SH_DENYNO, _S_IREAD | _S_IWRITE);
    return error == 0 ? descriptor : -1;
}

void NoteInterruptions(void (*note)(int signal))
{
    for (const int signal : {SIGINT, SIGTERM, SIGBREAK})
        if (std::signal(signal, note) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

// Consoles before Windows 10 print control sequences as they stand, so none counts as watched.
bool MessagesAreWatched()
{
    return false;
}
