// Runs the vantor program as a user does, in a folder of its own per test.
#pragma once

#include "tools/utf8_path.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

struct Outcome {
    int status = -1;   // as exited, or 128 + signal
    std::string out, err;
};

// Starts the program in the folder and waits for its end. Its output passes through the files stdout and stderr there.
Outcome RunProgram(const std::string& program, const std::string& folder, const std::vector<std::string>& arguments);

inline std::string Contents(const std::string& path)
{
    std::ifstream file(Utf8Path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ProgramTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::error_code taken;   // by another test at the same time, or by whatever has the name
        int i = 0;
        do
            folder = testing::TempDir() + "vantor" + std::to_string(i++);
        while (!std::filesystem::create_directory(folder, taken) && i < 10000);
        ASSERT_FALSE(taken) << taken.message();
    }
    // The system may keep a file for a moment after the program that had it open has ended.
    void TearDown() override
    {
        std::error_code kept;
        for (int attempt = 0; attempt < 250; ++attempt) {
            std::filesystem::remove_all(folder, kept);
            if (!kept)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        ADD_FAILURE() << folder << ": " << kept.message();
    }

    std::string Path(const std::string& name) const { return folder + "/" + name; }

    // All names in the folder, but for those of Run's own.
    std::set<std::string> Files() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (!Utf8Name(entry.path().filename()).starts_with("std"))
                names.insert(Utf8Name(entry.path().filename()));
        return names;
    }

    Outcome Run(const std::vector<std::string>& arguments) const { return RunProgram(program, folder, arguments); }

    std::string folder;
    std::string program = VANTOR_PATH;
};
