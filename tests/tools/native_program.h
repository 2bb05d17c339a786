// Starting the program with what only processes of this system have: limits set before, signals sent meanwhile.
#pragma once

#include "tests/tools/program.h"

#include <functional>
#include <sys/types.h>

// prepare runs in the child before the program.
pid_t StartProgram(const std::string& program, const std::string& folder, const std::vector<std::string>& arguments,
                   const std::function<void()>& prepare = {});
Outcome WaitForProgram(const std::string& folder, pid_t child);
