// The tables of one transform length: made once per length and processor class, shared by all objects that use them, and
// freed with the last of these.
#pragma once

#include "dsp/transform_kernel.h"

#include <cstdint>
#include <memory>

struct AlignedDelete {
    void operator()(void* p) const;
};
template <class T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete>;
// Uninitialised, aligned to 64 bytes. Throws std::bad_alloc.
template <class T>
AlignedArray<T> MakeAligned(size_t count);

template <class T>
class TransformPlan {
public:
    // points: complex points, a power of two. Throws std::bad_alloc.
    TransformPlan(const TransformClass& processorClass, int32_t points);

    const TransformKernel<T>& Kernel() const { return kernel; }
    const TransformTables<T>& Tables() const { return tables; }

private:
    class Roots;
    void ChooseRadices();
    T* FillStageTwiddles(const Roots& roots, T* at);
    T* FillLaneTwiddles(const Roots& roots, T* at);
    T* FillRealTwiddles(const Roots& roots, T* at);
    void FillOrder();

    const TransformKernel<T>& kernel;
    TransformTables<T> tables = {};
    AlignedArray<T> twiddles;
    std::unique_ptr<uint32_t[]> order;
};

// The plan of this length, from any thread. Throws std::bad_alloc.
template <class T>
std::shared_ptr<const TransformPlan<T>> SharedPlan(const TransformClass& processorClass, int32_t points);

extern template class TransformPlan<float>;
extern template class TransformPlan<double>;
