#include "dsp/transform.h"

#include "tests/allocations.h"
#include "tests/dsp/each_class.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <thread>
#include <vector>

namespace {

template <class T>
std::vector<T> RandomValues(int32_t n)
{
    const Signal x = Noise(n, unsigned(n));
    return {x.begin(), x.end()};
}

// Bins of n points by the sum written out, added up in more digits than the transform has.
class DirectTransform {
public:
    explicit DirectTransform(std::vector<std::complex<double>> data) : points(std::move(data))
    {
        const auto n = double(points.size());
        for (size_t i = 0; i < points.size(); ++i)
            roots.push_back(std::polar(1.0, -2.0 * std::numbers::pi * double(i) / n));
    }
    std::complex<double> operator()(int64_t k) const
    {
        long double re = 0.0L, im = 0.0L;
        const size_t n = points.size();
        for (size_t i = 0; i < n; ++i) {
            const auto x = points[i] * roots[i * size_t(k) % n];
            re += x.real();
            im += x.imag();
        }
        return {double(re), double(im)};
    }

private:
    std::vector<std::complex<double>> points, roots;
};

// Roundings grow with the square root of the stages, bins of noise are about sqrt(n) in size; the factor 4 is for the
// worst of all bins.
template <class T>
double Tolerance(int64_t n)
{
    return 4.0 * std::numeric_limits<T>::epsilon() * std::sqrt(double(n) * std::log2(2.0 * double(n)));
}

// Bins to compare: all of a short transform, a spread of a long one.
int32_t Step(int64_t n)
{
    return n <= 256 ? 1 : int32_t(n / 61);
}

template <class T>
void ExpectRealTransform(int32_t n)
{
    RealTransform<T> transform(n);
    const std::vector<T> x = RandomValues<T>(n);
    std::vector<T> spectrum(size_t(n), T(77)), back(size_t(n), T(77));
    transform.Forward(spectrum.data(), x.data());
    const DirectTransform direct({x.begin(), x.end()});
    const double tolerance = Tolerance<T>(n);
    EXPECT_NEAR(spectrum[0], direct(0).real(), tolerance) << n;
    EXPECT_NEAR(spectrum[1], direct(n / 2).real(), tolerance) << n;
    for (int32_t k = 1; k < n / 2; k += Step(n)) {
        const auto expected = direct(k);
        EXPECT_NEAR(spectrum[size_t(2 * k)], expected.real(), tolerance) << n << " bin " << k;
        EXPECT_NEAR(spectrum[size_t(2 * k + 1)], expected.imag(), tolerance) << n << " bin " << k;
    }
    const std::vector<T> kept = spectrum;
    transform.Inverse(back.data(), spectrum.data());
    EXPECT_EQ(spectrum, kept) << "the inverse changed its input";
    for (int32_t i = 0; i < n; ++i)
        ASSERT_NEAR(back[size_t(i)] / T(n), x[size_t(i)], 8 * std::numeric_limits<T>::epsilon()) << n << " at " << i;

    std::vector<T> inPlace = x;
    transform.Forward(inPlace.data(), inPlace.data());
    EXPECT_EQ(inPlace, spectrum) << n;
    transform.Inverse(inPlace.data(), inPlace.data());
    EXPECT_EQ(inPlace, back) << n;
}

template <class T>
void ExpectComplexTransform(int32_t n)
{
    ComplexTransform<T> transform(n);
    const std::vector<T> x = RandomValues<T>(2 * n);
    std::vector<T> spectrum(x.size()), back(x.size());
    transform.Forward(spectrum.data(), x.data());
    std::vector<std::complex<double>> points;
    for (size_t i = 0; i < x.size(); i += 2)
        points.emplace_back(x[i], x[i + 1]);
    const DirectTransform direct(points);
    for (int32_t k = 0; k < n; k += Step(n)) {
        const auto expected = direct(k);
        EXPECT_NEAR(spectrum[size_t(2 * k)], expected.real(), Tolerance<T>(2 * n)) << n << " bin " << k;
        EXPECT_NEAR(spectrum[size_t(2 * k + 1)], expected.imag(), Tolerance<T>(2 * n)) << n << " bin " << k;
    }
    transform.Inverse(back.data(), spectrum.data());
    for (size_t i = 0; i < x.size(); ++i)
        ASSERT_NEAR(back[i] / T(n), x[i], 8 * std::numeric_limits<T>::epsilon()) << n << " at " << i;
    transform.Forward(back.data(), x.data());
    transform.Inverse(back.data(), back.data());
    transform.Inverse(spectrum.data(), spectrum.data());
    EXPECT_EQ(back, spectrum) << n;
}

class Transform : public EachClass {};
INSTANTIATE_TEST_SUITE_P(, Transform, testing::ValuesIn(ClassesHere()), ClassName);

TEST_P(Transform, OfRealDataAgreesWithTheSumAndComesBackTimesN)
{
    for (int32_t n = 2; n <= 65536; n *= 2) {
        ExpectRealTransform<float>(n);
        ExpectRealTransform<double>(n);
    }
}

TEST_P(Transform, OfComplexDataAgreesWithTheSumAndComesBackTimesN)
{
    for (int32_t n = 1; n <= 16384; n *= 2) {
        ExpectComplexTransform<float>(n);
        ExpectComplexTransform<double>(n);
    }
}

TEST_P(Transform, TakesUnalignedArrays)
{
    for (int32_t n : {4, 64, 128, 1024}) {
        RealTransform<float> transform(n);
        const Signal x = Noise(n + 1, 2);
        const Signal shifted(x.begin() + 1, x.end());
        Signal a(size_t(n) + 3, 7.0f), b(static_cast<size_t>(n));
        transform.Forward(a.data() + 1, x.data() + 1);
        transform.Forward(b.data(), shifted.data());
        EXPECT_TRUE(std::equal(b.begin(), b.end(), a.begin() + 1)) << n;
        EXPECT_EQ(a[0], 7.0f) << n;
        EXPECT_EQ(a[size_t(n) + 1], 7.0f) << n;
        transform.Inverse(a.data() + 1, a.data() + 1);
        EXPECT_EQ(a[size_t(n) + 1], 7.0f) << n;
    }
}

TEST_P(Transform, ObjectsOfOneLengthShareTablesAcrossThreads)
{
    const Signal x = Noise(2048, 9);
    std::vector<Signal> results(4, Signal(2048));
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i)
                RealTransform<float>(2048).Forward(result.data(), x.data());
        });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, results[0]);

    const RealTransform<float> first(2048);
    const int64_t before = AllocationCount();
    const RealTransform<float> second(2048);
    EXPECT_LE(AllocationCount() - before, 2) << "a second object needs its work buffer and no tables";
}

}   // namespace
