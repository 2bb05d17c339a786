// Runs a test once for each processor class that this machine has, with that class in force.
#pragma once

#include "dsp/processor_class.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

inline void PrintTo(const ProcessorClass* c, std::ostream* out)
{
    *out << c->name;
}

class EachClass : public testing::TestWithParam<const ProcessorClass*> {
protected:
    void SetUp() override { ASSERT_TRUE(SelectClass(GetParam()->name)); }
    void TearDown() override { SelectClass(chosen.name); }

private:
    const ProcessorClass& chosen = ActiveClass();
};

inline std::vector<const ProcessorClass*> ClassesHere()
{
    std::vector<const ProcessorClass*> classes;
    for (const ProcessorClass& c : ProcessorClasses())
        if (c.runsHere())
            classes.push_back(&c);
    return classes;
}

inline std::string ClassName(const testing::TestParamInfo<const ProcessorClass*>& info)
{
    return info.param->name;
}
