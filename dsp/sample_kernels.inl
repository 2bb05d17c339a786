// The vector kernels of samples on their way from and to files, in loops that the compiler turns into vectors of whatever
// class it builds for. Included by the portable form and by each class's file inside its unnamed namespace; includes
// nothing, as dsp/simd/lanes.inl.

// Magnitudes order like their bits, where infinity stands above all numbers, and what is no number above that.
float PeakMagnitude(const float* x, int32_t n)
{
    int32_t peak = 0;
    for (int32_t i = 0; i < n; ++i) {
        const int32_t magnitude = __builtin_bit_cast(int32_t, x[i]) & 0x7fffffff;
        peak = magnitude > peak ? magnitude : peak;
    }
    return __builtin_bit_cast(float, peak);
}

void FromInt16(float* dst, const int16_t* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] = float(src[i]) * (1.0f / 32768.0f);
}

// All of it is exact in floats: next to 1.5 x 2^23 they have whole numbers only, so that the sum rounds, and holds the
// number in its lowest bits.
int32_t ToInt16(int16_t* dst, const float* src, float fullScale, int32_t n)
{
    constexpr float kRounding = 12582912.0f;
    int32_t beyond = 0;
    for (int32_t i = 0; i < n; ++i) {
        const float value = src[i] * fullScale;
        const float raised = value > -fullScale ? value : -fullScale;
        const float limited = raised < fullScale - 1.0f ? raised : fullScale - 1.0f;
        beyond += int32_t(value > fullScale - 0.5f) | int32_t(value < -fullScale - 0.5f);
        dst[i] = int16_t(__builtin_bit_cast(int32_t, limited + kRounding) - __builtin_bit_cast(int32_t, kRounding));
    }
    return beyond;
}
