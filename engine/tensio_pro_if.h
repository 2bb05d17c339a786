// The stretch engine as its caller sees it: one interface, its factory, and the limits of both.
//
// Audio is planar: an array with one pointer per channel, frames consecutive behind each. The engine is pulled at its
// output: GetFramesNeeded tells what the next output block costs, ProcessData takes that much and gives one block.
//   stretch  output duration / input duration
//   pitch    multiplier on every frequency
// Their product, the total factor, is quantised to an even synthesis hop; the setters hand back the value in force.
// Order of calls: CreateInstance; GetFramesNeededAt(0.025, 4.0) for the worst case of buffers; the setters, also later
// between any two blocks; then GetFramesNeeded and ProcessData in turn; FlushBuffer at the end of the input until it
// gives less than a block; Reset, and the factors anew, for the next stream.
// An engine belongs to one thread at a time and has no locks.
#pragma once

#include "dsp/status.h"

#include <cstdint>

enum TensioMode : int32_t {
    kModePro = 0,
    kModeProCoarse = 1,          // "Invalid Pro Mode": Pro over the coarse core
    kModeEfficient = 2,
    kModeEfficientAlias = 3,     // "Invalid Eff Mode": behaves as Efficient
    kModeSoloistMono = 4,
    kModeSoloistSpeech = 5,
};

constexpr int32_t kMaxBlockFrames = 1024;
constexpr int32_t kMaxEngineChannels = 48;
constexpr float kMinSampleRate = 8000.0f;      // Hz
constexpr float kMaxSampleRate = 384000.0f;    // Hz
constexpr float kMinTotalFactor = 0.1f;        // of stretch x pitch, in the Pro and Efficient modes
constexpr float kMaxTotalFactor = 10.0f;

class CTensioProIf {
public:
    virtual ~CTensioProIf() = default;
    // Takes frames of in[channel] and writes one output block: kSuccess. kNoResult when the input so far does not
    // complete one; what was delivered stays in the engine and counts for the next call. in and out may coincide.
    virtual int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept = 0;
    // Input frames that the next ProcessData should bring.
    virtual int32_t GetFramesNeeded() noexcept = 0;
    // Sets the output block, gives GetFramesNeeded.
    virtual int32_t SetOutputBlockSize(int32_t frames) noexcept = 0;
    // GetFramesNeeded as it would be at these factors; those in force stay. kNoResult when refused or not known.
    virtual int32_t GetFramesNeededAt(float stretch, float pitch) noexcept = 0;
    // Set both factors. The one passed by address gives way to the quantisation and receives the value in force.
    // sync: a glide during running audio, which must not make the output position jump. A refusal changes nothing.
    virtual int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept = 0;
    virtual int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept = 0;
    // Back to the state before the first block; the factors are to be set again before the next one.
    virtual int32_t Reset() noexcept = 0;
    // The tail after the end of the input: frames written, at most a block; kNoResult when nothing is left.
    virtual int32_t FlushBuffer(float* const out[]) noexcept = 0;
    // Output frames held ready.
    virtual int32_t GetFramesBuffered() noexcept = 0;
    // 0: two channels are coded as a matrix; 1: left and right stay as they are. kNotAvailable unless two channels.
    virtual int32_t SetStereoInputMode(int32_t mode) noexcept = 0;
    // Factor of the spectral envelope, 1.0 lets formants follow the pitch. No effect outside the Pro modes.
    virtual int32_t SetEnvelopeFactor(float factor) noexcept = 0;
    // Order of the envelope by the content's pitch, 8 to 512. No effect outside the Pro modes.
    virtual int32_t SetCutOffPitch(int32_t pitch) noexcept = 0;
    // Input time, in frames, of the next output frame.
    virtual double GetInputPosition() noexcept = 0;
};

// Makes an engine. *ppEngine is null unless the result is kSuccess; the caller owns it through DeleteInstance. Checked in
// this order: blockFrames above kMaxBlockFrames gives kInvalidArgument; sampleRate outside its limits
// kInvalidSampleRate; channels outside 1 .. kMaxEngineChannels kInvalidChannelCount; mode outside 0 .. 5
// kInvalidArgument; a mode that this build has no engine for kNotAvailable; memory out kOutOfMemory.
int32_t CreateInstance(CTensioProIf** ppEngine, int32_t blockFrames, int32_t channels, float sampleRate, int32_t mode);
// Destroys and nulls; a null engine gives kInvalidArgument.
int32_t DeleteInstance(CTensioProIf** ppEngine);
