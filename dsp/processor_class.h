// The processor classes that vector code is compiled for, and the choice among them: the first of the list that runs
// here, unless the environment variable QX_VECTOR_CLASS names another one that does. The choice is made once, by the
// first vtnfInit.
#pragma once

#include "dsp/kernels_table.h"
#include "dsp/transform_kernel.h"
#include "dsp/vtnf_table.h"

#include <span>
#include <string_view>

struct ProcessorClass {
    const char* name;   // "avx512", "avx2", "portable"
    bool (*runsHere)();
    const VtnfTable* table;
    const TransformClass* transforms;
    const VectorKernels* kernels;
};

// Best first; the last one runs everywhere.
std::span<const ProcessorClass> ProcessorClasses();

// The class in force; chooses it if nobody has. [any]
const ProcessorClass& ActiveClass();

// Puts another class in force, for tests and benchmarks, while no other thread uses vector code. Objects that exist keep
// their class, and are destroyed under it. False, and nothing changes, when the name is unknown or does not run here.
bool SelectClass(std::string_view name);
