#include "dsp/qx_perf.h"
#include "dsp/qx_perf_status.h"
#include "dsp/transform.h"

#include <cmath>
#include <new>

namespace {

constexpr int kMaxOrder = 24;
constexpr size_t kAlignment = 64;
enum : uint32_t { kComplexMark = 0x43464651, kRealMark = 0x52464651, kFreedMark = 0 };

enum Scaling { kDivideForward = 1, kDivideInverse = 2, kDivideByRoot = 4, kDivideNone = 8 };

// What a creator gives out. mark tells its kind.
template <class T>
struct Spec {
    uint32_t mark;
    int32_t values;   // numbers in a block of data: two for each complex point
    T forwardScale, inverseScale;
    std::shared_ptr<const TransformPlan<T>> plan;   // none for a single real value
};

template <class T>
void SetScales(Spec<T>& spec, int flag, double length)
{
    spec.forwardScale = T(flag == kDivideForward  ? 1.0 / length
                          : flag == kDivideByRoot ? 1.0 / std::sqrt(length)
                                                  : 1.0);
    spec.inverseScale = T(flag == kDivideInverse  ? 1.0 / length
                          : flag == kDivideByRoot ? 1.0 / std::sqrt(length)
                                                  : 1.0);
}

template <class T>
int32_t Create(void** out, uint32_t mark, int order, int flag)
{
    if (!out)
        return QxPerfMapStatus(kPerfNullPointer);
    *out = nullptr;
    if (order < 0 || order > kMaxOrder)
        return QxPerfMapStatus(kPerfBadOrder);
    if (flag != kDivideForward && flag != kDivideInverse && flag != kDivideByRoot && flag != kDivideNone)
        return QxPerfMapStatus(kPerfBadFlag);
    try {
        const int32_t length = 1 << order, points = mark == kComplexMark ? length : length / 2;
        auto spec = std::make_unique<Spec<T>>();
        spec->mark = mark;
        spec->values = mark == kComplexMark ? 2 * length : length;
        SetScales(*spec, flag, length);
        if (points > 0)
            spec->plan = SharedPlan<T>(ActiveTransforms(), points);
        *out = spec.release();
        return QxPerfMapStatus(kPerfSuccess);
    } catch (const std::bad_alloc&) {
        return QxPerfMapStatus(kPerfNoMemory);
    }
}

template <class T>
int Check(const void* spec, uint32_t mark)
{
    if (!spec)
        return kPerfNullPointer;
    return static_cast<const Spec<T>*>(spec)->mark == mark ? kPerfSuccess : kPerfWrongSpec;
}

template <class T>
int32_t BufferSize(const void* spec, uint32_t mark, int* bytes)
{
    if (!bytes)
        return QxPerfMapStatus(kPerfNullPointer);
    if (const int status = Check<T>(spec, mark); status != kPerfSuccess)
        return QxPerfMapStatus(status);
    *bytes = int(size_t(static_cast<const Spec<T>*>(spec)->values) * sizeof(T) + kAlignment);
    return QxPerfMapStatus(kPerfSuccess);
}

template <class T>
T* Aligned(uint8_t* work)
{
    const auto address = reinterpret_cast<uintptr_t>(work);
    return reinterpret_cast<T*>(work + (kAlignment - address % kAlignment) % kAlignment);
}

template <class T>
int32_t Run(const void* src, void* dst, const void* opaque, uint32_t mark, uint8_t* work,
            typename TransformKernel<T>::Pass TransformKernel<T>::*pass, T Spec<T>::*scale)
{
    if (!src || !dst)
        return QxPerfMapStatus(kPerfNullPointer);
    if (const int status = Check<T>(opaque, mark); status != kPerfSuccess)
        return QxPerfMapStatus(status);
    const auto& spec = *static_cast<const Spec<T>*>(opaque);
    std::unique_ptr<uint8_t[]> own;
    if (!work) {
        own.reset(new (std::nothrow) uint8_t[size_t(spec.values) * sizeof(T) + kAlignment]);
        work = own.get();
        if (!work)
            return QxPerfMapStatus(kPerfNoMemory);
    }
    T* out = static_cast<T*>(dst);
    if (spec.plan)
        (spec.plan->Kernel().*pass)(spec.plan->Tables(), out, static_cast<const T*>(src), Aligned<T>(work));
    if (spec.*scale != T(1))
        for (int32_t i = 0; i < spec.values; ++i)
            out[i] *= spec.*scale;
    return QxPerfMapStatus(kPerfSuccess);
}

template <class T>
int32_t Destroy(void* spec, uint32_t mark)
{
    if (const int status = Check<T>(spec, mark); status != kPerfSuccess)
        return QxPerfMapStatus(status);
    auto* owned = static_cast<Spec<T>*>(spec);
    owned->mark = kFreedMark;
    delete owned;
    return QxPerfMapStatus(kPerfSuccess);
}

}   // namespace

// One algorithm serves every hint.
int32_t QxPerfsFFTInitAlloc_C_32fc(void** spec, int order, int flag, QxPerfHintAlgorithm)
{
    return Create<float>(spec, kComplexMark, order, flag);
}

int32_t QxPerfsFFTGetBufSize_C_32fc(const void* spec, int* bytes)
{
    return BufferSize<float>(spec, kComplexMark, bytes);
}

int32_t QxPerfsFFTFwd_CToC_32fc(const void* src, void* dst, const void* spec, uint8_t* work)
{
    return Run<float>(src, dst, spec, kComplexMark, work, &TransformKernel<float>::complexForward,
                      &Spec<float>::forwardScale);
}

int32_t QxPerfsFFTInv_CToC_32fc(const void* src, void* dst, const void* spec, uint8_t* work)
{
    return Run<float>(src, dst, spec, kComplexMark, work, &TransformKernel<float>::complexInverse,
                      &Spec<float>::inverseScale);
}

int32_t QxPerfsFFTFree_C_32fc(void* spec)
{
    return Destroy<float>(spec, kComplexMark);
}

int32_t QxPerfsFFTInitAlloc_R_64f(void** spec, int order, int flag, QxPerfHintAlgorithm)
{
    return Create<double>(spec, kRealMark, order, flag);
}

int32_t QxPerfsFFTGetBufSize_R_64f(void* spec, int* bytes)
{
    return BufferSize<double>(spec, kRealMark, bytes);
}

int32_t QxPerfsFFTFwd_RToPerm_64f_I(double* data, const void* spec, uint8_t* work)
{
    return Run<double>(data, data, spec, kRealMark, work, &TransformKernel<double>::realForward,
                       &Spec<double>::forwardScale);
}

int32_t QxPerfsFFTInv_PermToR_64f_I(double* data, const void* spec, uint8_t* work)
{
    return Run<double>(data, data, spec, kRealMark, work, &TransformKernel<double>::realInverse,
                       &Spec<double>::inverseScale);
}

int32_t QxPerfsFFTFree_R_64f(void* spec)
{
    return Destroy<double>(spec, kRealMark);
}
