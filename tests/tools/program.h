// Runs the vantor program as a user does, in a folder of its own per test.
#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct Outcome {
    int status = -1;   // as exited, or 128 + signal
    std::string out, err;
};

inline std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ProgramTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "vantorXXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string Path(const std::string& name) const { return folder + "/" + name; }

    // All names in the folder, but for those of Run's own.
    std::set<std::string> Files() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (!entry.path().filename().string().starts_with("std"))
                names.insert(entry.path().filename().string());
        return names;
    }

    // Starts the program in the folder; prepare runs in the child before it.
    pid_t Start(const std::vector<std::string>& arguments, const std::function<void()>& prepare = {}) const
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

    Outcome Wait(pid_t child) const
    {
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Contents(Path("stdout")),
                Contents(Path("stderr"))};
    }

    Outcome Run(const std::vector<std::string>& arguments, const std::function<void()>& prepare = {}) const
    {
        return Wait(Start(arguments, prepare));
    }

    std::string folder;
    std::string program = VANTOR_PATH;
};
