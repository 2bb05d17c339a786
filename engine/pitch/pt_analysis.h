// One frame of the pitch tracker to one record. Two candidates, the maximum of a harmonic product over the peaks of the
// spectrum (after Noll 1969) and that of a weighted harmonic sum (after Hermes 1988), are tested for octave errors and
// jumps against a short memory of past pitches; a parabola refines the winner to 1/30 bin.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class CFFT;

// The result of a hop, the contract between the tracker and PSOLA analysis.
struct PitchRecord {
    float frequency;         // Hz; of an unreliable frame too, from the memory of past values
    float harmonicity;       // dB; 0 when the frame is judged unreliable
    float level;             // RMS of the positive samples over the whole frame's length
    float levelChange;       // (level - previous level) / level
    float frequencyChange;   // (previous - frequency) / (1 + frequency + previous)
};
static_assert(sizeof(PitchRecord) == 5 * sizeof(float));

class CPTAnalysis {
public:
    // Throws std::bad_alloc.
    CPTAnalysis(int32_t sampleRate, int32_t transformLength, int32_t frameSamples);
    virtual ~CPTAnalysis();
    CPTAnalysis(const CPTAnalysis&) = delete;
    CPTAnalysis& operator=(const CPTAnalysis&) = delete;

    // frame: frameSamples samples. *record holds the previous frame's result on entry (its frequency enters the
    // decision) and this one's on return.
    void Process(const float* frame, PitchRecord* record) noexcept;
    // Forgets the signal; the memory of past pitches is set to 220 Hz.
    void Reset() noexcept;

private:
    void MeasureLevel(const float* x, PitchRecord* record) noexcept;
    void MakeSpectrum(const float* x) noexcept;
    void KeepPeaks() noexcept;
    int32_t HarmonicProductBin() noexcept;
    int32_t HarmonicSumBin() noexcept;
    int32_t ResolveOctave(int32_t productBin, int32_t sumBin) noexcept;
    int32_t ResolveJump(int32_t bin) const noexcept;
    double HarmonicRatio(int32_t bin, float level) const noexcept;
    void Decide(int32_t productBin, int32_t sumBin, PitchRecord* record) noexcept;
    void ForgetPitch(float frequency) noexcept;
    int32_t LowestBin() const noexcept;
    double BinFrequency(double bin) const noexcept;
    int32_t NearestBin(float frequency) const noexcept;
    float RefinedFrequency(int32_t bin) const noexcept;

    int32_t analysisRate;   // Hz
    int32_t fftLength;      // N
    int32_t frameLength;    // samples, below N: the rest is zero-padding
    int32_t octaveLowBin;   // the harmonic sum overrules the product only above this
    int32_t sumLowBin;      // lowest candidate of the harmonic sum
    std::vector<float> window;
    std::vector<float> spectrum;   // N floats; magnitudes S[k] of bins below N/2, the largest at 1, after MakeSpectrum
    std::vector<float> peaks;      // N floats: peak spectrum P, then harmonic sum T
    std::vector<float> product;    // N/2 floats: Q
    std::unique_ptr<CFFT> fft;
    std::array<float, 10> pitchHistory;   // Hz, newest first, of reliable frames
    float lastVoiced;                     // Hz
    float previous;                       // Hz, the record's frequency before the latest frame
    bool octaveHold = false;              // the last frame's product was an octave too high
    float harmonicityThreshold;           // dB
    float previousLevel = 0.0f;
};
