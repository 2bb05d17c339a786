#include "dsp/vtnf.h"

#include "tests/dsp/each_class.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace {

class Vtnf : public EachClass {
protected:
    const VtnfTable& table = *GetParam()->table;
};
INSTANTIATE_TEST_SUITE_P(, Vtnf, testing::ValuesIn(ClassesHere()), ClassName);

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kRounding = 6e-8;   // half a unit in the last place, relative
constexpr int32_t kSizes[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 100};   // around each vector width
constexpr size_t kMargin = 40;   // floats behind the operands that have to stay as they are

Signal Positive(int32_t n, unsigned seed)
{
    Signal x = Noise(n, seed);
    for (float& v : x)
        v = std::fabs(v) + 0.01f;
    return x;
}

// Runs an entry of the definition and of the class on the same inputs: floats arrays of dst, a and b, the class's copies
// shifted by offset floats. bound is per element, relative to what the magnitudes in the expression add up to, at most 4.
using Call = std::function<void(const VtnfTable&, float* dst, const float* a, const float* b, int32_t n)>;
void ExpectSame(const VtnfTable& table, const Call& call, double bound, const char* name)
{
    for (int32_t n : kSizes)
        for (int32_t offset : {0, 1, 3}) {
            const int32_t floats = 2 * n + int32_t(kMargin);
            const Signal dst = Noise(floats, 1), a = Positive(floats, 2), b = Positive(floats, 3);
            Signal expected = dst, got(size_t(offset), 0.0f), aShifted = got, bShifted = got;
            got.insert(got.end(), dst.begin(), dst.end());
            aShifted.insert(aShifted.end(), a.begin(), a.end());
            bShifted.insert(bShifted.end(), b.begin(), b.end());
            call(kVtnfPortable, expected.data(), a.data(), b.data(), n);
            call(table, got.data() + offset, aShifted.data() + offset, bShifted.data() + offset, n);
            for (size_t i = 0; i < expected.size(); ++i)
                ASSERT_NEAR(got[i + size_t(offset)], expected[i], bound * 4.0)
                    << name << ' ' << n << '+' << offset << " at " << i;
        }
}

TEST_P(Vtnf, SimpleEntriesGiveTheVeryValuesOfTheDefinition)
{
    const std::pair<const char*, Call> calls[] = {
        {"Zero", [](auto& t, float* d, auto, auto, int32_t n) { t.Zero(d, n); }},
        {"MaxEvery", [](auto& t, float* d, auto a, auto, int32_t n) { t.MaxEvery(d, a, n); }},
        {"Add", [](auto& t, float* d, auto a, auto, int32_t n) { t.Add(d, a, n); }},
        {"AddScalar", [](auto& t, float* d, auto, auto, int32_t n) { t.AddScalar(d, 0.3f, n); }},
        {"Sub", [](auto& t, float* d, auto a, auto, int32_t n) { t.Sub(d, a, n); }},
        {"Mul", [](auto& t, float* d, auto a, auto, int32_t n) { t.Mul(d, a, n); }},
        {"MulScalar", [](auto& t, float* d, auto, auto, int32_t n) { t.MulScalar(d, 0.3f, n); }},
        {"Div", [](auto& t, float* d, auto a, auto, int32_t n) { t.Div(d, a, n); }},
        {"Abs", [](auto& t, float* d, auto, auto, int32_t n) { t.Abs(d, n); }},
        {"ThresholdLT", [](auto& t, float* d, auto, auto, int32_t n) { t.ThresholdLT(d, -0.2f, 9.0f, n); }},
        {"ThresholdGT", [](auto& t, float* d, auto, auto, int32_t n) { t.ThresholdGT(d, 0.2f, -9.0f, n); }},
        {"AddComplex", [](auto& t, float* d, auto a, auto, int32_t n) { t.AddComplex(d, a, n); }},
        {"PackSpectrum", [](auto& t, float* d, auto a, auto b, int32_t n) { t.PackSpectrum(d, a, b, 2 * n); }},
        {"UnpackSpectrum",
         [](auto& t, float* d, auto a, auto, int32_t n) { t.UnpackSpectrum(d, d + n + 1, a, 2 * n); }},
        {"NoOp", [](auto& t, float*, auto, auto, int32_t) { t.NoOp(); }},
    };
    for (const auto& [name, call] : calls)
        ExpectSame(table, call, 0.0, name);
}

// Fused products round once where the definition rounds twice.
TEST_P(Vtnf, ProductsAndSumsStayWithinTheirRoundings)
{
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto b, int32_t n) { t.AddProduct(d, a, b, n); }, kRounding, "AddProduct");
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto, int32_t n) { t.MulPacked(d, a, n); }, kRounding, "MulPacked");
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto b, int32_t n) { t.AddProductPacked(d, a, b, n); }, 2 * kRounding,
        "AddProductPacked");
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto, int32_t n) { t.Mean(a, d, n); }, kRounding, "Mean");
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto, int32_t n) { t.StdDev(a, d, n + 1); }, kRounding, "StdDev");
    ExpectSame(
        table, [](auto& t, float* d, auto a, auto b, int32_t n) { t.DotProduct(a, b, d, n); }, 8 * kRounding,
        "DotProduct");   // of up to 100 products
}

TEST_P(Vtnf, MaxIndexGivesTheFirstOfEqualMaxima)
{
    for (int32_t n : kSizes)
        for (int32_t first = 0; first < n; ++first)
            for (int32_t second : {first, n - 1, (first + n) / 2}) {
                Signal v = Noise(n, unsigned(n));
                v[size_t(first)] = v[size_t(second)] = 2.0f;
                float maximum = 0.0f;
                int32_t index = -1;
                table.MaxIndex(v.data(), &maximum, &index, n);
                ASSERT_EQ(index, first) << n;
                ASSERT_EQ(maximum, 2.0f);
            }
}

// x over everything that does not overflow; denormal results to an absolute rounding.
TEST_P(Vtnf, ExpErrsByLessThanOneUnitInTheLastPlace)
{
    Signal x;
    for (float v = -105.0f; v < 88.7f; v += 0.003f)
        x.push_back(v);
    Signal y = x;
    table.Exp(y.data(), int32_t(y.size()));
    for (size_t i = 0; i < x.size(); ++i) {
        const double expected = std::exp(double(x[i]));
        ASSERT_NEAR(y[i], expected, std::max(1.0e-7 * expected, 1.5e-45)) << "e^" << x[i];
    }
    Signal special = {0.0f, -0.0f, 89.0f, kInfinity, -kInfinity, -200.0f, kNaN};
    table.Exp(special.data(), int32_t(special.size()));
    EXPECT_EQ(special[0], 1.0f);
    EXPECT_EQ(special[1], 1.0f);
    EXPECT_EQ(special[2], kInfinity);
    EXPECT_EQ(special[3], kInfinity);
    EXPECT_EQ(special[4], 0.0f);
    EXPECT_EQ(special[5], 0.0f);
    EXPECT_TRUE(std::isnan(special[6]));
}

TEST_P(Vtnf, ThresholdLnErrsByLittleFromDenormalsToTheLargest)
{
    Signal x = {1.0f};
    for (uint32_t bits = 1; bits < 0x7f800000; bits += 30011) {   // denormals to the largest number
        float v;
        std::memcpy(&v, &bits, sizeof v);
        x.push_back(v);
    }
    for (float v = 0.5f; v < 2.0f; v += 0.0001f)   // where the result passes 0
        x.push_back(v);
    Signal y = x;
    table.ThresholdLn(y.data(), 0.0f, 0.0f, int32_t(y.size()));
    for (size_t i = 0; i < x.size(); ++i) {
        const double expected = std::log(double(x[i]));
        ASSERT_NEAR(y[i], expected, 1.3e-7 * std::fabs(expected)) << "ln " << x[i];
    }
    Signal special = {0.0f, -1.0f, kInfinity, kNaN};
    table.ThresholdLn(special.data(), -2.0f, 1.0f, 4);
    EXPECT_EQ(special[0], -kInfinity);
    EXPECT_TRUE(std::isnan(special[1]));
    EXPECT_EQ(special[2], kInfinity);
    EXPECT_TRUE(std::isnan(special[3]));
    Signal floored = {0.0f, -1.0f, 1e-9f, 1.0f, -kInfinity};
    table.ThresholdLn(floored.data(), 1e-6f, 1.0f, 5);
    EXPECT_EQ(floored, Signal(5, 0.0f));
}

TEST_P(Vtnf, PhaseAndMagnitudeErrByLittleInEveryOctant)
{
    Signal packed = {-3.0f, 5.0f};
    for (int32_t degree = 0; degree < 720; ++degree)
        for (double radius : {1e-15, 0.01, 1.0, 3e4, 1e15}) {
            packed.push_back(float(radius * std::cos(degree * std::numbers::pi / 360)));
            packed.push_back(float(radius * std::sin(degree * std::numbers::pi / 360)));
        }
    for (float v : {0.0f, -0.0f, 0.0f, -0.0f, -1.0f, -0.0f, -1.0f, 0.0f, 0.0f, -2.0f, 0.0f, 2.0f})
        packed.push_back(v);
    const int32_t bins = int32_t(packed.size() / 2);
    Signal phase(size_t(bins), 0.0f), magnitude = phase;
    table.Phase(phase.data(), packed.data(), bins);
    table.Magnitude(magnitude.data(), packed.data(), bins);
    EXPECT_EQ(packed[1], 5.0f);
    EXPECT_FLOAT_EQ(phase[0], std::numbers::pi_v<float>);
    EXPECT_EQ(magnitude[0], 3.0f);
    for (int32_t k = 1; k < bins; ++k) {
        const double re = packed[size_t(2 * k)], im = packed[size_t(2 * k + 1)], angle = std::atan2(im, re);
        ASSERT_NEAR(phase[size_t(k)], angle, std::min(3e-7, 2e-7 * std::fabs(angle))) << re << ' ' << im;
        ASSERT_EQ(std::signbit(phase[size_t(k)]), std::signbit(im)) << re << ' ' << im;
        ASSERT_NEAR(magnitude[size_t(k)], std::hypot(re, im), 1.3e-7 * std::hypot(re, im));
    }
}

TEST_P(Vtnf, PhaseAndMagnitudeWorkInPlaceAndOnAnyLength)
{
    for (int32_t bins : kSizes)
        for (size_t offset : {0, 1, 3}) {
            const Signal packed = Noise(2 * bins + 8, 4);
            for (const auto entry : {table.Phase, table.Magnitude}) {
                Signal apart(size_t(bins) + 2, 7.0f), inPlace = packed;
                entry(apart.data(), packed.data() + offset, bins);
                entry(inPlace.data() + offset, inPlace.data() + offset, bins);
                for (size_t k = 0; k < size_t(bins); ++k)
                    ASSERT_EQ(apart[k], inPlace[k + offset]) << bins << '+' << offset;
                EXPECT_EQ(apart[size_t(bins)], 7.0f);
            }
        }
}

// The definition leaves element 0 alone, the processor classes wrap it too; on a whole number of turns they may differ
// by one, which is the same angle.
TEST_P(Vtnf, PrincipalArgumentWrapsToHalfATurnEachWay)
{
    const double turn = 2.0 * std::numbers::pi;
    for (int32_t n : kSizes) {
        Signal x = Noise(n, 8, 500.0f), y(size_t(n) + 1, 7.0f);
        Signal same = y;
        table.PrincipalArgument(y.data(), x.data(), n);
        kVtnfPortable.PrincipalArgument(same.data(), x.data(), n);
        EXPECT_EQ(y[size_t(n)], 7.0f);
        for (size_t i = 1; i < size_t(n); ++i)
            ASSERT_EQ(y[i], same[i]) << "rounds otherwise: " << x[i];
        for (size_t i = &table == &kVtnfPortable ? 1 : 0; i < size_t(n); ++i) {
            ASSERT_LE(std::fabs(y[i]), std::numbers::pi + 1e-4) << x[i];
            const double turns = (double(x[i]) - y[i]) / turn;
            ASSERT_NEAR(turns, std::round(turns), 2e-5) << x[i];   // roundings of 500 in units of a turn
        }
    }
    Signal zero = {2.0f, 4.0f};
    table.PrincipalArgument(zero.data(), zero.data(), 2);
    EXPECT_NEAR(zero[0], 2.0f, 1e-6);
    EXPECT_NEAR(zero[1], 4.0 - turn, 1e-6);
}

TEST_P(Vtnf, AllocGivesAlignedMemoryOrNull)
{
    for (int32_t n : {0, -1, std::numeric_limits<int32_t>::min()})
        EXPECT_EQ(table.Alloc(n), nullptr);
    for (int32_t n : {1, 3, 1000}) {
        float* p = table.Alloc(n);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
        table.Zero(p, n);
        table.Free(&p);
        EXPECT_EQ(p, nullptr);
        table.Free(&p);
    }
}

}   // namespace
