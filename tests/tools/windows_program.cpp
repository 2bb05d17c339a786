#include "tests/tools/program.h"

#include <windows.h>

namespace {

HANDLE CreateInherited(const std::string& path)
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return CreateFileW(Utf8Path(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

// None of the tests' arguments ends in a backslash or holds a quote.
std::wstring CommandLine(const std::string& program, const std::vector<std::string>& arguments)
{
    std::wstring line = L"\"" + Utf8Path(program).wstring() + L"\"";
    for (const std::string& argument : arguments)
        line += L" \"" + Utf8Path(argument).wstring() + L"\"";
    return line;
}

}   // namespace

Outcome RunProgram(const std::string& program, const std::string& folder, const std::vector<std::string>& arguments)
{
    // Names of their own for each run: the system may close the files of a program a moment after it has ended.
    static int runs = 0;
    const std::string run = std::to_string(++runs), out = folder + "/stdout" + run, err = folder + "/stderr" + run;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateInherited(out);
    startup.hStdError = CreateInherited(err);
    std::wstring line = CommandLine(program, arguments);
    PROCESS_INFORMATION process = {};
    const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        Utf8Path(folder).c_str(), &startup, &process);
    DWORD status = 99;
    if (started) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    return {int(status), Contents(out), Contents(err)};
}
