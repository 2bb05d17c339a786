// Two first-order filters of one channel, with one sample of state each. PSOLA analysis runs them over every pitch
// period to see the high and the low band apart when it rates transients. The state carries from call to call and
// there is no reset: a filter runs from creation to destruction, across all block borders.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include <cstdint>
#include <memory>

// One pole: y[n] = -a * y[n-1] + (1 + a) * x[n] + 1e-24. With a in -1 .. 0 a low-pass of unit gain at 0 Hz; the
// constant keeps the recursion out of denormals, so silence settles near 1e-24 / (1 + a) instead of 0.
class CSimpleIIRFilter {
public:
    explicit CSimpleIIRFilter(float a) noexcept;
    virtual ~CSimpleIIRFilter() = default;

    float ProcessSample(float x) noexcept;
    void ProcessInPlace(float* data, int32_t n) noexcept;
    // in and out may be the same array.
    void Process(const float* in, float* out, int32_t n) noexcept;

private:
    float state = 0.0f;   // previous output
    float coefState;
    float coefInput;
};

// Two taps: y[n] = a * x[n-1] + (1 - |a|) * x[n]. With a = -0.5 half the difference of neighbours, a high-pass.
class CSimpleFIRFilter {
public:
    explicit CSimpleFIRFilter(float a) noexcept;
    virtual ~CSimpleFIRFilter() = default;

    float ProcessSample(float x) noexcept;
    void ProcessInPlace(float* data, int32_t n) noexcept;
    // in and out may be the same array.
    void Process(const float* in, float* out, int32_t n) noexcept;

private:
    float state = 0.0f;   // previous input
    float coefState;
    float coefInput;
};

// Give 0; *ppFilter is null when memory is out. The caller owns the filter through the destroy function, which accepts
// null and gives 0.
int32_t CreateIIR(CSimpleIIRFilter** ppFilter, float a);
int32_t DestroyIIR(CSimpleIIRFilter* pFilter);
int32_t CreateFIR(CSimpleFIRFilter** ppFilter, float a);
int32_t DestroyFIR(CSimpleFIRFilter* pFilter);

struct SimpleFilterDestroy {
    void operator()(CSimpleIIRFilter* p) const { DestroyIIR(p); }
    void operator()(CSimpleFIRFilter* p) const { DestroyFIR(p); }
};
using SimpleIirPtr = std::unique_ptr<CSimpleIIRFilter, SimpleFilterDestroy>;
using SimpleFirPtr = std::unique_ptr<CSimpleFIRFilter, SimpleFilterDestroy>;
