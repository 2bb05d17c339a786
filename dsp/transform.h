// The transform of the product: a power of two, unscaled in both directions, so that forward and inverse together give N
// times the input. The frame transform, the analysis transform and the exported ones all stand on it. After construction
// nothing allocates; one object serves one thread at a time, and shares its tables with all of its length.
//   X[k] = sum over n of x[n] exp(-2 pi i k n / N)
#pragma once

#include "dsp/transform_plan.h"

#include <cstdint>
#include <memory>

constexpr int32_t kMinTransformLength = 2;
constexpr int32_t kMaxTransformLength = 1 << 24;

// The transforms of the processor class in force (dsp/processor_class.h).
const TransformClass& ActiveTransforms();

// Real data, in the packed layout: out[0] = Re X[0], out[1] = Re X[N/2], then Re, Im of bins 1 .. N/2-1.
template <class T>
class RealTransform {
public:
    // length: a power of two from kMinTransformLength to kMaxTransformLength. Throws std::bad_alloc.
    explicit RealTransform(int32_t length, const TransformClass& processorClass = ActiveTransforms())
        : plan(SharedPlan<T>(processorClass, length / 2)), work(MakeAligned<T>(size_t(length)))
    {
    }

    // Each reads and writes length values; in and out may be the same array.
    void Forward(T* out, const T* in) noexcept { plan->Kernel().realForward(plan->Tables(), out, in, work.get()); }
    void Inverse(T* out, const T* in) noexcept { plan->Kernel().realInverse(plan->Tables(), out, in, work.get()); }

private:
    std::shared_ptr<const TransformPlan<T>> plan;
    AlignedArray<T> work;
};

// Complex data, real and imaginary parts interleaved.
template <class T>
class ComplexTransform {
public:
    // length: complex points, a power of two up to kMaxTransformLength / 2. Throws std::bad_alloc.
    explicit ComplexTransform(int32_t length, const TransformClass& processorClass = ActiveTransforms())
        : plan(SharedPlan<T>(processorClass, length)), work(MakeAligned<T>(2 * size_t(length)))
    {
    }

    // Each reads and writes 2 * length values; in and out may be the same array.
    void Forward(T* out, const T* in) noexcept { plan->Kernel().complexForward(plan->Tables(), out, in, work.get()); }
    void Inverse(T* out, const T* in) noexcept { plan->Kernel().complexInverse(plan->Tables(), out, in, work.get()); }

private:
    std::shared_ptr<const TransformPlan<T>> plan;
    AlignedArray<T> work;
};
