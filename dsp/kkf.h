// Cross-correlation of two short segments, and the search for the best lag near a prediction.
//   result[N/2 + m] = N * sum over j of a[j + m] * b[j],   m = -N/2 .. N/2 - 1 samples
// A positive lag m means that b matches a later part of a. Nothing is divided by energy or length, and negative
// correlation reads as 0, since no caller looks for it. By the correlation theorem (Oppenheim and Schafer,
// "Discrete-Time Signal Processing"): three transforms whatever the range.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class CFFT;

class CKKF {
public:
    // N is the smallest power of two at or above length, and at least 8. Throws std::bad_alloc.
    explicit CKKF(int32_t length);
    virtual ~CKKF();
    CKKF(const CKKF&) = delete;
    CKKF& operator=(const CKKF&) = delete;

    // The lengths, in samples, together stay within N, or the ends wrap into each other; each is at most N. Always 0.
    int32_t Correlate(const float* a, const float* b, int32_t lengthA, int32_t lengthB) noexcept;
    // Best lag within predictedLag +- span, the window moved inside +- halfRange (at most N/2); the earlier of two
    // equal peaks. Gives predictedLag itself when the segments are silent or unlike.
    int32_t FindMaxNear(int32_t halfRange, int32_t predictedLag, int32_t span) const noexcept;
    // *p: N floats, owned here, valid until the next Correlate; gives N.
    int32_t GetResult(float** p) noexcept;

protected:
    // out[k] = a[k] * conj(b[k]) * (-1)^k over N floats of packed spectrum. The sign turns the inverse transform by
    // N/2, so that lag 0 stands in the middle.
    virtual void MultiplySpectra(const float* a, const float* b, float* out) noexcept;

private:
    int32_t fftSize;    // N
    int32_t halfSize;   // N/2, the index of lag 0 in result
    std::unique_ptr<CFFT> fft;
    std::vector<float> bufferA, bufferB;   // the zero-padded segments, then their spectra; N floats each
    std::vector<float> result;             // N floats
};

// *ppKkf is null unless the result is kSuccess; the caller owns it through DestroyKKF. A length below 1 or above 2^24
// gives kInvalidArgument, memory out kOutOfMemory.
int32_t CreateKKF(CKKF** ppKkf, int32_t length);
// Accepts null; always 0.
int32_t DestroyKKF(CKKF* pKkf);

struct KkfDestroy {
    void operator()(CKKF* p) const { DestroyKKF(p); }
};
using KkfPtr = std::unique_ptr<CKKF, KkfDestroy>;
