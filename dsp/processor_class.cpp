#include "dsp/processor_class.h"

#include "dsp/kernels.h"
#include "dsp/transform.h"
#include "dsp/vtnf.h"

#include <atomic>
#include <cstdlib>

namespace {

bool Always()
{
    return true;
}

#ifdef QX_X86_CLASSES
// These ask the operating system too, whether it saves the registers.
bool HasAvx2Fma()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

bool HasAvx512()
{
    return HasAvx2Fma() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
}

int32_t ProcessorLevel()
{
    return __builtin_cpu_supports("sse3")   ? 4
           : __builtin_cpu_supports("sse2") ? 3
           : __builtin_cpu_supports("sse")  ? 2
                                            : 1;
}
#else
int32_t ProcessorLevel()
{
    return 4;   // the layouts of the commonest processors
}
#endif

constexpr ProcessorClass kClasses[] = {
#ifdef QX_X86_CLASSES
    {"avx512", HasAvx512, &kVtnfAvx512, &kTransformAvx512, &kKernelsAvx512},
    {"avx2", HasAvx2Fma, &kVtnfAvx2, &kTransformAvx2, &kKernelsAvx2},
#endif
    {"portable", Always, &kVtnfPortable, &kTransformPortable, &kKernelsPortable},
};

constexpr int32_t kLevelNotChosen = -1;

constinit std::atomic<const ProcessorClass*> inForce{nullptr};
constinit std::atomic<int32_t> level{kLevelNotChosen};

const ProcessorClass* FindClass(std::string_view name)
{
    for (const ProcessorClass& c : kClasses)
        if (c.name == name && c.runsHere())
            return &c;
    return nullptr;
}

const ProcessorClass& ChooseClass()
{
    if (const char* asked = std::getenv("QX_VECTOR_CLASS"))
        if (const ProcessorClass* c = FindClass(asked))
            return *c;
    const ProcessorClass* c = kClasses;
    while (!c->runsHere())
        ++c;
    return *c;
}

void PutInForce(const ProcessorClass& c)
{
    inForce.store(&c, std::memory_order_release);
    vtnfTableInForce.store(c.table, std::memory_order_release);
    kernelsInForce.store(c.kernels, std::memory_order_release);
}

bool FillOnce()
{
    PutInForce(ChooseClass());
    level.store(ProcessorLevel(), std::memory_order_release);
    return true;
}

}   // namespace

constinit std::atomic<const VtnfTable*> vtnfTableInForce{&kVtnfPortable};
constinit std::atomic<const VectorKernels*> kernelsInForce{&kKernelsPortable};

void vtnfInit()
{
    if (level.load(std::memory_order_acquire) != kLevelNotChosen)
        return;
    [[maybe_unused]] static const bool filled = FillOnce();
}

int32_t vtnfGetLevel()
{
    return level.load(std::memory_order_acquire);
}

std::span<const ProcessorClass> ProcessorClasses()
{
    return kClasses;
}

const ProcessorClass& ActiveClass()
{
    vtnfInit();
    return *inForce.load(std::memory_order_acquire);
}

bool SelectClass(std::string_view name)
{
    vtnfInit();
    const ProcessorClass* c = FindClass(name);
    if (c)
        PutInForce(*c);
    return c != nullptr;
}

const TransformClass& ActiveTransforms()
{
    return *ActiveClass().transforms;
}
