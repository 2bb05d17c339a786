// The transform of the product: real data of a power of two, unscaled in both directions, in the packed layout
//   out[0] = Re X[0], out[1] = Re X[N/2], out[2k], out[2k + 1] = Re, Im X[k],   X[k] = sum of x[n] exp(-2 pi i k n / N)
// so that forward and inverse together give N times the input. The frame transform, the analysis transform and the
// exported ones all stand on it. After construction nothing allocates; one object serves one thread at a time.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

constexpr int32_t kMinTransformLength = 2;
constexpr int32_t kMaxTransformLength = 1 << 24;

template <class T>
class RealTransform {
public:
    // length: a power of two from kMinTransformLength to kMaxTransformLength. Throws std::bad_alloc.
    explicit RealTransform(int32_t length);

    // Each reads and writes length values; in and out may be the same array.
    void Forward(T* out, const T* in) noexcept;
    void Inverse(T* out, const T* in) noexcept;

private:
    void Complex(bool inverse) noexcept;

    std::vector<std::complex<T>> points;     // length / 2
    std::vector<std::complex<T>> twiddles;   // exp(-2 pi i k / length), k below length / 2
};

extern template class RealTransform<float>;
extern template class RealTransform<double>;
