// The envelope of a magnitude spectrum, riding on its partials: iterated cepstral smoothing in which the log spectrum is
// raised to the smooth curve wherever it lies below it ("true envelope": Imai and Abe 1979; Roebel and Rodet 2005). The
// lifter is a half-period raised cosine, so that the curve rings less than under a hard cut.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "dsp/vtnf_buffer.h"

#include <cstdint>
#include <memory>

class CSpectralEnvelope {
public:
    virtual ~CSpectralEnvelope();
    CSpectralEnvelope(const CSpectralEnvelope&) = delete;
    CSpectralEnvelope& operator=(const CSpectralEnvelope&) = delete;

    // Cepstral coefficients that the curve keeps, limited to 0 .. size / 2: a low order gives a smooth curve. The
    // estimator gives nothing useful before the first call, nor at order 0.
    void SetOrder(int32_t n) noexcept;

    // spectrum: size floats, bin magnitudes in the first half; a work area, its content is lost. envelope: size floats,
    // the linear value of each bin twice in a row, ready for element-wise use on a packed spectrum. No bin of the
    // spectrum stands more than e (8.7 dB) above it, unless the input is not finite: then the values mean nothing, but
    // the call still returns.
    void Estimate(float* spectrum, float* envelope) noexcept;

    int32_t GetSize() const { return size; }

private:
    friend int32_t CreateSpectralEnvelope(CSpectralEnvelope** ppEnvelope, int32_t size);
    explicit CSpectralEnvelope(int32_t size);

    // The smooth curve through logSpectrum into smooth; cepstrum carries on from pass to pass.
    void Smooth(const float* logSpectrum, float* smooth) noexcept;
    // Raises logSpectrum to the smooth curve; gives the height by which it still stands out, in natural-log units.
    float Raise(float* logSpectrum, const float* smooth) noexcept;

    int32_t size;              // N, the transform size
    int32_t order;             // lifter length in packed elements, two to a coefficient
    float threshold = 1.0f;    // where the iteration stops, in natural-log units
    VtnfBuffer spectrumWork;   // N floats
    VtnfBuffer cepstrum;       // N floats, packed: the running cepstrum
    VtnfBuffer lifter;         // N floats, packed
    FftPtr fft;
};

// size is a power of two from 4, else kInvalidArgument; kOutOfMemory when memory is out. *ppEnvelope is null unless the
// result is kSuccess; the caller owns it through DestroySpectralEnvelope.
int32_t CreateSpectralEnvelope(CSpectralEnvelope** ppEnvelope, int32_t size);
// Destroys and nulls; a null object gives kInvalidArgument.
int32_t DestroySpectralEnvelope(CSpectralEnvelope** ppEnvelope);

struct SpectralEnvelopeDestroy {
    void operator()(CSpectralEnvelope* p) const noexcept { DestroySpectralEnvelope(&p); }
};
using SpectralEnvelopePtr = std::unique_ptr<CSpectralEnvelope, SpectralEnvelopeDestroy>;
