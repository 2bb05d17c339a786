#include "dsp/vtnf_shared.h"

#include <cstddef>
#include <new>

namespace {

constexpr std::align_val_t kAlignment{64};   // a cache line, and the widest vector register

}   // namespace

float* VtnfAlloc(int32_t n)
{
    if (n <= 0)
        return nullptr;
    return static_cast<float*>(::operator new(size_t(n) * sizeof(float), kAlignment, std::nothrow));
}

void VtnfFree(float** p)
{
    ::operator delete(*p, kAlignment);
    *p = nullptr;
}

void VtnfNoOp() {}
