#include "dsp/qx_perf.h"

#include "dsp/qx_perf_status.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>

#ifdef __x86_64__
#include <cpuid.h>
#endif

namespace {

struct Processor {
    uint32_t features = 0;   // the mask of QxPerfLevelOf, with MMX 0x01, SSE 0x02, MOVBE 0x20, SSE4.2 0x80
    bool ofTheNamedMaker = false;
};

Processor Identify()
{
    Processor found;
#ifdef __x86_64__
    uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(0, &eax, &ebx, &ecx, &edx))
        return found;
    const uint32_t maker[3] = {ebx, edx, ecx};
    found.ofTheNamedMaker = std::memcmp(maker, "GenuineIntel", sizeof maker) == 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx))
        return found;
    const struct {
        uint32_t word;
        int bit;
    } features[] = {{edx, 23}, {edx, 25}, {edx, 26}, {ecx, 0}, {ecx, 9}, {ecx, 22}, {ecx, 19}, {ecx, 20}};
    for (size_t i = 0; i < std::size(features); ++i)
        found.features |= (features[i].word >> features[i].bit & 1u) << i;
#endif
    return found;
}

std::atomic<int32_t> perfLevel{0};

constexpr size_t kAlignment = 32;   // bytes

template <class T>
int32_t MinMax(const T* src, int n, T* min, T* max)
{
    if (!src || !min || !max)
        return QxPerfMapStatus(kPerfNullPointer);
    if (n < 1)
        return QxPerfMapStatus(kPerfBadLength);
    const auto [low, high] = std::minmax_element(src, src + n);
    *min = *low;
    *max = *high;
    return QxPerfMapStatus(kPerfSuccess);
}

}   // namespace

int32_t QxPerf_Initialize()
{
    static const Processor processor = Identify();
    perfLevel = QxPerfLevelOf(processor.features);
    return QxPerfMapStatus(processor.ofTheNamedMaker ? kPerfSuccess : kPerfOtherMaker);
}

int32_t QxPerfGetLevel()
{
    return perfLevel;
}

int32_t QxPerfMapStatus(int status)
{
    if (status == -9999)
        status = -255;
    if (status == -9998)
        status = -256;
    const uint32_t magnitude = status < 0 ? 0u - uint32_t(status) : uint32_t(status);
    return int32_t((magnitude + 0x4E600u) | (status < 0 ? 0x80040000u : 0x00040000u));
}

int32_t QxPerfStatusToHRESULT(QxPerfStatus status)
{
    return QxPerfMapStatus(status);
}

int QxPerfMapHintAlgorithm(QxPerfHintAlgorithm hint)
{
    return hint;
}

uint64_t QxPerfGetCpuClocks()
{
#ifdef __x86_64__
    return __builtin_ia32_rdtsc();
#else
    return uint64_t(std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1));
#endif
}

namespace {

// The address that the heap gave stands in the word below the block.
void* AllocateAligned(size_t bytes)
{
    char* raw = static_cast<char*>(std::malloc(bytes + sizeof(void*) + kAlignment - 1));
    if (!raw)
        return nullptr;
    const auto first = reinterpret_cast<uintptr_t>(raw) + sizeof(void*);
    char* block = raw + sizeof(void*) + (kAlignment - first % kAlignment) % kAlignment;
    std::memcpy(block - sizeof raw, &raw, sizeof raw);
    return block;
}

}   // namespace

uint8_t* QxPerfsMalloc_8u(int bytes)
{
    return bytes < 1 ? nullptr : static_cast<uint8_t*>(AllocateAligned(size_t(bytes)));
}

float* QxPerfsMalloc_32f(int count)
{
    return count < 1 ? nullptr : static_cast<float*>(AllocateAligned(size_t(count) * sizeof(float)));
}

void QxPerfsFree(void* p)
{
    if (!p)
        return;
    void* raw = nullptr;
    std::memcpy(&raw, static_cast<char*>(p) - sizeof raw, sizeof raw);
    std::free(raw);
}

// A linear congruential generator with the constants of Knuth and Lewis (Press and others, "Numerical Recipes"), of whose
// states the upper 24 bits count.
int32_t QxPerfsRandUniform_Direct_32f(float* dst, int n, float low, float high, unsigned* seed)
{
    if (!dst || !seed)
        return QxPerfMapStatus(kPerfNullPointer);
    if (n < 1)
        return QxPerfMapStatus(kPerfBadLength);
    uint32_t state = *seed;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        const double part = double(state >> 8) / double(0xffffff);
        dst[i] = float(low + part * (double(high) - low));
    }
    *seed = state;
    return QxPerfMapStatus(kPerfSuccess);
}

int32_t QxPerfsSqrt_32f(const float* src, float* dst, int n)
{
    if (!src || !dst)
        return QxPerfMapStatus(kPerfNullPointer);
    if (n < 1)
        return QxPerfMapStatus(kPerfBadLength);
    for (int i = 0; i < n; ++i)
        dst[i] = std::sqrt(src[i]);
    return QxPerfMapStatus(kPerfSuccess);
}

int32_t QxPerfsMul_64fc_I(const void* src, void* srcDst, int n)
{
    if (!src || !srcDst)
        return QxPerfMapStatus(kPerfNullPointer);
    if (n < 1)
        return QxPerfMapStatus(kPerfBadLength);
    const auto* a = static_cast<const double*>(src);
    auto* b = static_cast<double*>(srcDst);
    for (int64_t i = 0; i < 2 * int64_t(n); i += 2) {
        const double re = a[i] * b[i] - a[i + 1] * b[i + 1];
        b[i + 1] = a[i] * b[i + 1] + a[i + 1] * b[i];
        b[i] = re;
    }
    return QxPerfMapStatus(kPerfSuccess);
}

int32_t QxPerfsConj_64fc_I(void* data, int n)
{
    if (!data)
        return QxPerfMapStatus(kPerfNullPointer);
    if (n < 1)
        return QxPerfMapStatus(kPerfBadLength);
    auto* imaginary = static_cast<double*>(data) + 1;
    for (int64_t i = 0; i < n; ++i)
        imaginary[2 * i] = -imaginary[2 * i];
    return QxPerfMapStatus(kPerfSuccess);
}

int32_t QxPerfsMinMax_64f(const double* src, int n, double* min, double* max)
{
    return MinMax(src, n, min, max);
}

int32_t QxPerfsMinMax_32f(const float* src, int n, float* min, float* max)
{
    return MinMax(src, n, min, max);
}

int32_t QxPerfsDeinterleave_32f(const float* src, int channels, int frames, float** dst)
{
    for (int c = 0; c < channels; ++c)
        for (int i = 0; i < frames; ++i)
            dst[c][i] = src[int64_t(i) * channels + c];
    return 0;
}
