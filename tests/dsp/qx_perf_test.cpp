#include "dsp/qx_perf.h"

#include "tests/allocations.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <complex>
#include <limits>
#include <vector>

namespace {

constexpr int32_t kOk = 0x0004E600;

TEST(QxPerf, StatusesBecomeResultCodes)
{
    static constexpr struct {
        int status;
        uint32_t result;
    } kCases[] = {{0, 0x0004E600},     {20, 0x0004E614},    {-8, 0x8004E608},
                  {-9999, 0x8004E6FF}, {-9998, 0x8004E700}, {std::numeric_limits<int>::min(), 0x8004E600}};
    for (const auto& c : kCases) {
        EXPECT_EQ(uint32_t(QxPerfMapStatus(c.status)), c.result) << c.status;
        EXPECT_EQ(uint32_t(QxPerfStatusToHRESULT(c.status)), c.result) << c.status;
    }
    for (const auto hint : {QXPERF_HINT_NONE, QXPERF_HINT_FAST, QXPERF_HINT_ACCURATE})
        EXPECT_EQ(QxPerfMapHintAlgorithm(hint), int(hint));
}

TEST(QxPerf, LevelFollowsTheHighestFeature)
{
    static constexpr struct {
        uint32_t features;
        int32_t level;
    } kCases[] = {{0x00, 0}, {0x03, 0}, {0x07, 1}, {0x0f, 2}, {0x1f, 3}, {0x7f, 4}, {0xa0, 0}, {0x40, 4}};
    for (const auto& c : kCases)
        EXPECT_EQ(QxPerfLevelOf(c.features), c.level) << c.features;
    const int32_t first = QxPerf_Initialize();
    EXPECT_TRUE(first == kOk || first == 0x0004E614) << std::hex << first;
    EXPECT_EQ(QxPerf_Initialize(), first);
#ifdef __x86_64__
    const int32_t expected = __builtin_cpu_supports("sse4.1")  ? 4
                             : __builtin_cpu_supports("ssse3") ? 3
                             : __builtin_cpu_supports("sse3")  ? 2
                                                               : 1;
    EXPECT_EQ(QxPerfGetLevel(), expected);
    EXPECT_EQ(first == kOk, __builtin_cpu_is("intel") != 0);
#endif
    const uint64_t clocks = QxPerfGetCpuClocks();
    EXPECT_GE(QxPerfGetCpuClocks(), clocks);
}

TEST(QxPerf, MemoryIsAlignedOrNull)
{
    EXPECT_EQ(QxPerfsMalloc_32f(0), nullptr);
    EXPECT_EQ(QxPerfsMalloc_32f(-1), nullptr);
    EXPECT_EQ(QxPerfsMalloc_8u(0), nullptr);
    QxPerfsFree(nullptr);
    for (int n = 1; n < 200; n += 7) {
        float* p = QxPerfsMalloc_32f(n);
        uint8_t* q = QxPerfsMalloc_8u(n);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(q) % 32, 0u);
        std::fill_n(p, n, 1.0f);
        std::fill_n(q, n, uint8_t(1));
        QxPerfsFree(p);
        QxPerfsFree(q);
    }
}

TEST(QxPerf, RandomValuesFillTheirRangeEvenlyAndCarryTheSeed)
{
    unsigned seed = 7, again = 7;
    std::vector<float> x(20000), head(5000), tail(15000);
    EXPECT_EQ(QxPerfsRandUniform_Direct_32f(x.data(), 20000, -2.0f, 3.0f, &seed), kOk);
    QxPerfsRandUniform_Direct_32f(head.data(), 5000, -2.0f, 3.0f, &again);
    QxPerfsRandUniform_Direct_32f(tail.data(), 15000, -2.0f, 3.0f, &again);
    head.insert(head.end(), tail.begin(), tail.end());
    EXPECT_EQ(x, head);
    EXPECT_EQ(seed, again);
    std::array<int, 5> counts = {};
    for (float v : x) {
        ASSERT_TRUE(v >= -2.0f && v <= 3.0f) << v;
        ++counts[std::min(size_t(v + 2.0f), size_t(4))];
    }
    for (int count : counts)
        EXPECT_NEAR(count, 4000, 5 * 57);   // five deviations of a binomial count
}

TEST(QxPerf, ElementOperations)
{
    const Signal x = {4.0f, 0.25f, 0.0f, 9.0f, 2.0f};
    Signal y(5);
    EXPECT_EQ(QxPerfsSqrt_32f(x.data(), y.data(), 5), kOk);
    EXPECT_EQ(y, (Signal{2.0f, 0.5f, 0.0f, 3.0f, std::sqrt(2.0f)}));
    float low = 7.0f, high = 7.0f;
    EXPECT_EQ(QxPerfsMinMax_32f(x.data(), 5, &low, &high), kOk);
    EXPECT_EQ(low, 0.0f);
    EXPECT_EQ(high, 9.0f);
    const double d[] = {-1.5, 2.5, -7.0};
    double dLow = 0.0, dHigh = 0.0;
    EXPECT_EQ(QxPerfsMinMax_64f(d, 3, &dLow, &dHigh), kOk);
    EXPECT_EQ(dLow, -7.0);
    EXPECT_EQ(dHigh, 2.5);

    using Complex = std::complex<double>;
    const Complex a[] = {{1, 2}, {-3, 0.5}};
    Complex b[] = {{2, -1}, {4, 4}};
    EXPECT_EQ(QxPerfsMul_64fc_I(a, b, 2), kOk);
    EXPECT_EQ(b[0], Complex(4, 3));
    EXPECT_EQ(b[1], Complex(-14, -10));
    EXPECT_EQ(QxPerfsConj_64fc_I(b, 1), kOk);
    EXPECT_EQ(b[0], Complex(4, -3));
    EXPECT_EQ(b[1], Complex(-14, -10));

    Signal left(2), right(2);
    float* channels[] = {left.data(), right.data()};
    EXPECT_EQ(QxPerfsDeinterleave_32f(x.data(), 2, 2, channels), 0);
    EXPECT_EQ(left, (Signal{4.0f, 0.0f}));
    EXPECT_EQ(right, (Signal{0.25f, 9.0f}));
    EXPECT_EQ(QxPerfsDeinterleave_32f(x.data(), 0, 2, nullptr), 0);
}

TEST(QxPerf, BadArgumentsAreRefusedAndWriteNothing)
{
    float x[4] = {1, 2, 3, 4};
    double d[4] = {1, 2, 3, 4};
    float low = 7.0f, high = 7.0f;
    unsigned seed = 1;
    for (const int32_t status :
         {QxPerfsSqrt_32f(nullptr, x, 4), QxPerfsSqrt_32f(x, x, 0), QxPerfsSqrt_32f(x, x, -1),
          QxPerfsMinMax_32f(x, 0, &low, &high), QxPerfsMinMax_32f(x, 4, nullptr, &high),
          QxPerfsMul_64fc_I(nullptr, d, 1), QxPerfsConj_64fc_I(d, 0), QxPerfsConj_64fc_I(nullptr, 1),
          QxPerfsRandUniform_Direct_32f(x, -3, 0, 1, &seed), QxPerfsRandUniform_Direct_32f(x, 4, 0, 1, nullptr)})
        EXPECT_LT(status, 0);
    EXPECT_EQ(low, 7.0f);
    EXPECT_EQ(high, 7.0f);
    EXPECT_EQ(x[0], 1.0f);
    EXPECT_EQ(d[1], 2.0);
}

TEST(QxPerf, ComplexTransformAgreesWithTheSumUnderEveryScaling)
{
    static constexpr struct {
        int flag;
        double forward, inverse;   // power of the length
    } kCases[] = {{8, 0, 0}, {1, -1, 0}, {2, 0, -1}, {4, -0.5, -0.5}};
    for (const auto& c : kCases)
        for (int order : {0, 1, 3, 8}) {
            const int n = 1 << order;
            void* spec = nullptr;
            int bytes = 0;
            ASSERT_EQ(QxPerfsFFTInitAlloc_C_32fc(&spec, order, c.flag, QXPERF_HINT_FAST), kOk);
            ASSERT_EQ(QxPerfsFFTGetBufSize_C_32fc(spec, &bytes), kOk);
            std::vector<uint8_t> work(size_t(bytes) + 1);
            const Signal x = Noise(2 * n, 3);
            Signal y(x.size()), z(x.size());
            EXPECT_EQ(QxPerfsFFTFwd_CToC_32fc(x.data(), y.data(), spec, work.data() + 1), kOk);
            for (int k = 0; k < n; ++k) {
                std::complex<double> sum = 0.0;
                for (int i = 0; i < n; ++i)
                    sum += std::complex<double>(x[size_t(2 * i)], x[size_t(2 * i + 1)]) *
                           std::polar(1.0, -2.0 * std::numbers::pi * i * k / n);
                sum *= std::pow(n, c.forward);
                ASSERT_NEAR(y[size_t(2 * k)], sum.real(), 1e-5) << n << " bin " << k;
                ASSERT_NEAR(y[size_t(2 * k + 1)], sum.imag(), 1e-5) << n << " bin " << k;
            }
            EXPECT_EQ(QxPerfsFFTInv_CToC_32fc(y.data(), z.data(), spec, nullptr), kOk);
            const double gain = std::pow(n, 1.0 + c.forward + c.inverse);
            for (size_t i = 0; i < x.size(); ++i)
                ASSERT_NEAR(z[i] / gain, x[i], 2e-6) << n;
            EXPECT_EQ(QxPerfsFFTFree_C_32fc(spec), kOk);
        }
}

TEST(QxPerf, RealTransformInDoublePrecisionIsPacked)
{
    for (int order : {0, 1, 2, 10}) {
        const auto n = size_t(1) << order;
        void* spec = nullptr;
        ASSERT_EQ(QxPerfsFFTInitAlloc_R_64f(&spec, order, 8, QXPERF_HINT_NONE), kOk);
        int bytes = 0;
        ASSERT_EQ(QxPerfsFFTGetBufSize_R_64f(spec, &bytes), kOk);
        std::vector<uint8_t> work(static_cast<size_t>(bytes));
        const Signal x = Noise(int32_t(n), 4);
        std::vector<double> data(x.begin(), x.end());
        EXPECT_EQ(QxPerfsFFTFwd_RToPerm_64f_I(data.data(), spec, work.data()), kOk);
        double dc = 0.0, nyquist = 0.0;
        std::complex<double> first = 0.0;
        for (size_t i = 0; i < n; ++i) {
            dc += x[i];
            nyquist += i % 2 ? -x[i] : x[i];
            first += double(x[i]) * std::polar(1.0, -2.0 * std::numbers::pi * double(i) / double(n));
        }
        EXPECT_NEAR(data[0], dc, 1e-12);
        if (n > 1) {
            EXPECT_NEAR(data[1], nyquist, 1e-12);
        }
        if (n > 2) {
            EXPECT_NEAR(data[2], first.real(), 1e-12);
            EXPECT_NEAR(data[3], first.imag(), 1e-12);
        }
        EXPECT_EQ(QxPerfsFFTInv_PermToR_64f_I(data.data(), spec, nullptr), kOk);
        for (size_t i = 0; i < n; ++i)
            ASSERT_NEAR(data[i] / double(n), x[i], 1e-14);
        EXPECT_EQ(QxPerfsFFTFree_R_64f(spec), kOk);
    }
}

TEST(QxPerf, TransformsRefuseWhatTheyCannotMakeAndForeignSpecs)
{
    for (int order : {-1, 25, 1000}) {
        void* spec = &order;
        EXPECT_LT(QxPerfsFFTInitAlloc_C_32fc(&spec, order, 8, QXPERF_HINT_FAST), 0);
        EXPECT_EQ(spec, nullptr);
    }
    void *spec = nullptr, *other = nullptr;
    EXPECT_LT(QxPerfsFFTInitAlloc_R_64f(&spec, 4, 3, QXPERF_HINT_FAST), 0) << "no such scaling";
    EXPECT_LT(QxPerfsFFTInitAlloc_R_64f(nullptr, 4, 8, QXPERF_HINT_FAST), 0);
    ASSERT_EQ(QxPerfsFFTInitAlloc_R_64f(&spec, 4, 8, QXPERF_HINT_FAST), kOk);
    double data[16] = {5.0};
    EXPECT_LT(QxPerfsFFTFwd_RToPerm_64f_I(nullptr, spec, nullptr), 0);
    EXPECT_LT(QxPerfsFFTFwd_RToPerm_64f_I(data, nullptr, nullptr), 0);
    EXPECT_LT(QxPerfsFFTFwd_CToC_32fc(data, data, spec, nullptr), 0) << "a spec of the other kind";
    EXPECT_LT(QxPerfsFFTFree_C_32fc(spec), 0);
    EXPECT_LT(QxPerfsFFTFree_C_32fc(nullptr), 0);
    EXPECT_EQ(data[0], 5.0);
    EXPECT_EQ(QxPerfsFFTFree_R_64f(spec), kOk);
    for (int64_t successes = 0; successes < 100; ++successes) {
        const FailingAllocation failing(successes);
        const int32_t status = QxPerfsFFTInitAlloc_C_32fc(&other, 7, 8, QXPERF_HINT_FAST);
        if (!failing.HasFailed()) {
            EXPECT_EQ(status, kOk);
            break;
        }
        EXPECT_LT(status, 0);
        EXPECT_EQ(other, nullptr);
    }
    EXPECT_EQ(QxPerfsFFTFree_C_32fc(other), kOk);
}

}   // namespace
