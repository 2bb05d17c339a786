#include "tests/tools/native_program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

pid_t StartProgram(const std::string& program, const std::string& folder, const std::vector<std::string>& arguments,
                   const std::function<void()>& prepare)
{
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& a : arguments)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0)
        return child;
    if (chdir(folder.c_str()) != 0 || dup2(open("stdout", O_CREAT | O_TRUNC | O_WRONLY, 0600), 1) < 0 ||
        dup2(open("stderr", O_CREAT | O_TRUNC | O_WRONLY, 0600), 2) < 0)
        _exit(99);
    if (prepare)
        prepare();
    execv(program.c_str(), argv.data());
    _exit(99);
}

Outcome WaitForProgram(const std::string& folder, pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Contents(folder + "/stdout"),
            Contents(folder + "/stderr")};
}

Outcome RunProgram(const std::string& program, const std::string& folder, const std::vector<std::string>& arguments)
{
    return WaitForProgram(folder, StartProgram(program, folder, arguments));
}
