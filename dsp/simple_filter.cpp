#include "dsp/simple_filter.h"

#include <cmath>
#include <new>

namespace {

constexpr float kAntiDenormal = 1e-24f;   // -480 dB

}   // namespace

CSimpleIIRFilter::CSimpleIIRFilter(float a) noexcept : coefState(-a), coefInput(1.0f - coefState) {}

float CSimpleIIRFilter::ProcessSample(float x) noexcept
{
    state = coefState * state + coefInput * x + kAntiDenormal;
    return state;
}

void CSimpleIIRFilter::ProcessInPlace(float* data, int32_t n) noexcept
{
    Process(data, data, n);
}

void CSimpleIIRFilter::Process(const float* in, float* out, int32_t n) noexcept
{
    float y = state;   // a local stays in a register, which a member that out might alias does not
    for (int32_t i = 0; i < n; ++i) {
        y = coefState * y + coefInput * in[i] + kAntiDenormal;
        out[i] = y;
    }
    state = y;
}

CSimpleFIRFilter::CSimpleFIRFilter(float a) noexcept : coefState(a), coefInput(1.0f - std::fabs(a)) {}

float CSimpleFIRFilter::ProcessSample(float x) noexcept
{
    const float y = coefState * state + coefInput * x;
    state = x;
    return y;
}

void CSimpleFIRFilter::ProcessInPlace(float* data, int32_t n) noexcept
{
    Process(data, data, n);
}

void CSimpleFIRFilter::Process(const float* in, float* out, int32_t n) noexcept
{
    float previous = state;
    for (int32_t i = 0; i < n; ++i) {
        const float x = in[i];
        out[i] = coefState * previous + coefInput * x;
        previous = x;
    }
    state = previous;
}

int32_t CreateIIR(CSimpleIIRFilter** ppFilter, float a)
{
    *ppFilter = new (std::nothrow) CSimpleIIRFilter(a);
    return 0;
}

int32_t DestroyIIR(CSimpleIIRFilter* pFilter)
{
    delete pFilter;
    return 0;
}

int32_t CreateFIR(CSimpleFIRFilter** ppFilter, float a)
{
    *ppFilter = new (std::nothrow) CSimpleFIRFilter(a);
    return 0;
}

int32_t DestroyFIR(CSimpleFIRFilter* pFilter)
{
    delete pFilter;
    return 0;
}
