// FFTW in single precision, planned by measurement, on one thread; without the library its transforms do nothing and
// kHaveFftw is false.
#pragma once

#ifdef QX_HAVE_FFTW3F
#include <fftw3.h>

#include <algorithm>
#include <cstddef>

constexpr bool kHaveFftw = true;

class Fftw {
public:
    explicit Fftw(int n) : time(fftwf_alloc_real(size_t(n))), spectrum(fftwf_alloc_complex(size_t(n) / 2 + 1))
    {
        forward = fftwf_plan_dft_r2c_1d(n, time, spectrum, FFTW_MEASURE);
        inverse = fftwf_plan_dft_c2r_1d(n, spectrum, time, FFTW_MEASURE);
        std::fill_n(time, n, 0.0f);   // stays zero: the inverse destroys its input, and growing values would slow it
        std::fill_n(&spectrum[0][0], n + 2, 0.0f);
    }
    ~Fftw()
    {
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(inverse);
        fftwf_free(time);
        fftwf_free(spectrum);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;
    void Forward() { fftwf_execute(forward); }
    void Inverse() { fftwf_execute(inverse); }
    static const char* Version() { return fftwf_version; }

private:
    float* time;
    fftwf_complex* spectrum;
    fftwf_plan forward, inverse;
};
#else
constexpr bool kHaveFftw = false;

struct Fftw {
    explicit Fftw(int) {}
    void Forward() {}
    void Inverse() {}
    static const char* Version() { return ""; }
};
#endif
