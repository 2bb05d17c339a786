#include "dsp/processor_class.h"

#include "dsp/vtnf.h"
#include "tests/environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

// Runs in a child process, where no choice has been made yet.
int ChooseWith(const char* asked)
{
    if (vtnfGetLevel() != -1 || &vtnfGetTable() != &kVtnfPortable)
        return 1;
    SetEnvironment("QX_VECTOR_CLASS", asked);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(vtnfInit);
    for (auto& thread : threads)
        thread.join();
    const VtnfTable* table = &vtnfGetTable();
    SetEnvironment("QX_VECTOR_CLASS", "portable");
    vtnfInit();   // changes nothing
    if (vtnfGetLevel() < 1 || vtnfGetLevel() > 4 || &vtnfGetTable() != table || ActiveClass().table != table)
        return 2;
    std::fputs(ActiveClass().name, stderr);
    return 0;
}

TEST(ProcessorClassDeathTest, TheFirstThatRunsIsChosenUnlessTheEnvironmentNamesOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::string best = "portable";
    for (auto c = ProcessorClasses().rbegin(); c != ProcessorClasses().rend(); ++c)
        if (c->runsHere()) {
            best = c->name;
            EXPECT_EXIT(std::_Exit(ChooseWith(c->name)), testing::ExitedWithCode(0), std::string("^") + c->name + "$");
        }
    EXPECT_EXIT(std::_Exit(ChooseWith(nullptr)), testing::ExitedWithCode(0), "^" + best + "$");
    EXPECT_EXIT(std::_Exit(ChooseWith("no such class")), testing::ExitedWithCode(0), "^" + best + "$");
}

TEST(ProcessorClass, AnUnknownNameChangesNothing)
{
    const ProcessorClass& before = ActiveClass();
    EXPECT_FALSE(SelectClass("no such class"));
    EXPECT_EQ(&ActiveClass(), &before);
    EXPECT_EQ(&vtnfGetTable(), before.table);
}

}   // namespace
