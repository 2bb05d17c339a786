// The stream driver: turns interleaved host blocks of any size into the engine's blocks, ramps the factors from one
// setting to the next, and ends the output at the length that the stretch factors promised.
//
// Order of calls: construct; Reset; SetParams(record, true); UpdateRatios(false); then ProcessBlock again and again. On a
// change of parameters SetParams(record, false) and UpdateRatios(false); on a discontinuity Reset and the first three
// again; at the end of the stream ProcessBlock with flush set and no input until it gives 1. At a constant stretch the
// whole output then has exactly FramesExpected() frames.
//
// Two ways of cutting a stream into blocks give the same samples as long as no ramp runs; a ramp steps once per pass.
// All operations belong to one thread at a time. [streaming] operations neither allocate nor lock nor call the system;
// the one growth is that of the stage when an engine that cannot tell its worst case asks for more than ever before.
#pragma once

#include "aplugins/qxvantor/planar_queue.h"
#include "aplugins/qxvantor/promised_length.h"
#include "aplugins/qxvantor/ratio_ramp.h"
#include "aplugins/qxvantor/vantor_params.h"
#include "engine/tensio_pro_if.h"

#include <cstdint>
#include <memory>

class CVtn final {
public:
    // Makes the engine; tests put their own in its place.
    using EngineFactory = decltype(&CreateInstance);

    // sampleRate in Hz; blockSize in frames, 2048 from the filter: it sets buffer margins and the pace of ramps, and is
    // not the engine's block. More than 32 channels become 32. When no engine can be made (see HasEngine) the object
    // still lives: it takes nothing and gives nothing. firstMode: the mode that the first record will ask for, where it
    // is known; that record then finds its engine made, and otherwise makes its own.
    static constexpr int32_t kModeUnset = 6;
    CVtn(int32_t channels, float sampleRate, int32_t blockSize, EngineFactory factory = &CreateInstance,
         int32_t firstMode = kModeUnset);
    ~CVtn();
    CVtn(const CVtn&) = delete;
    CVtn& operator=(const CVtn&) = delete;

    // [control] Takes a record and writes the clamped values back into it. immediate: the factors are to be in force
    // with the next UpdateRatios instead of ramping. A new mode, and every record with bypass set, makes a new engine
    // and drops all audio in flight. Always true.
    virtual bool SetParams(QxVantorParams* params, bool immediate);
    // [streaming] Takes one ramp step into the engine. stepping: from within ProcessBlock, where a finished ramp costs
    // nothing; false after SetParams, which also renews the formant factor.
    virtual void UpdateRatios(bool stepping) noexcept;
    // [streaming] Drops what the engine holds. Frames in the stage and in the work area, and the counters, stay.
    virtual void Reset() noexcept;
    // [streaming] Takes up to *inFrames interleaved frames and writes up to *outFrames; both receive what was taken and
    // written. flush: no more input will follow this one, and the engine's tail is wanted. in and out may be null where
    // their count is 0, and may not overlap. Gives 1 when there was no input and the output was not filled: under flush
    // that is the end of the stream. Without an engine 1 whatever came in, with both counts 0.
    virtual int32_t ProcessBlock(bool flush, const float* in, uint32_t* inFrames, float* out,
                                 uint32_t* outFrames) noexcept;

    // [any, between calls] False outside 1 channel and more, 8000 to 384000 Hz, with a mode that this build lacks, or
    // with memory out.
    bool HasEngine() const noexcept { return engine != nullptr; }
    // The factors in force in the engine.
    double GetStretch() const noexcept { return ramp.CurStretch(); }
    double GetPitch() const noexcept { return ramp.CurPitch(); }
    // The promised length of the output for the input taken since the engine was made; what the engine lost to a Reset
    // no longer counts.
    int64_t FramesExpected() const noexcept { return framesExpected.Frames() - framesForgotten; }
    // Frames that came from the engine so far, and how many of them were silence that the driver had to add at the end
    // because the engine's tail fell short of the promise: 0 unless factors changed in mid-stream.
    int64_t FramesOut() const noexcept { return framesOut; }
    int64_t FramesPadded() const noexcept { return framesPadded; }

private:
    struct EngineDeleter {
        void operator()(CTensioProIf* p) const { DeleteInstance(&p); }
    };
    struct Output;
    struct Pair {
        float stretch, pitch;
        bool operator==(const Pair&) const = default;
    };

    bool InitEngine();
    bool MakeBuffers();
    void FreeBuffers();
    int32_t RampDivisor() const noexcept;
    void OfferPair(const Pair& next) noexcept;
    void UpdateEnvelope() noexcept;

    uint32_t FeedInput(const float* in, uint32_t given, int32_t needed, uint32_t taken, bool flush) noexcept;
    bool GrowStage(int32_t needed) noexcept;
    bool TakeEngineInput(int32_t needed) noexcept;
    int32_t RunEngine(int32_t needed) noexcept;
    int32_t FramesWanted() noexcept;
    int32_t LimitToPromise(int32_t n) const noexcept;
    void AppendEngineOutput(int32_t n) noexcept;
    void DrainWork(Output& output) noexcept;
    void FlushEngine(Output& output) noexcept;
    void PadToPromise(Output& output) noexcept;

    int32_t channels;
    int32_t blockSize;
    int32_t engineBlock;   // frames per engine pass: min(blockSize, 1024)
    float sampleRate;
    EngineFactory factory;
    std::unique_ptr<CTensioProIf, EngineDeleter> engine;
    PlanarQueue stageBuf;    // input that the engine has not asked for yet
    PlanarQueue workBuf;     // output that found no room yet; always below a pass, for it is drained before each
    PlanarBlock engineIn;    // what one ProcessData reads, engineInCapacity frames
    PlanarBlock engineOut;   // what one ProcessData or FlushBuffer writes, engineBlock frames
    int32_t engineInCapacity = 0;
    int32_t mode;
    int32_t syncPitch = 0;
    RatioRamp ramp;
    Pair accepted{1.0f, 1.0f};   // the last pair that the engine took,
    Pair offered{0.0f, 0.0f};    // and as what it was offered; zeros when it has to be offered anew
    double formantPercent = 100.0;
    int32_t cutOffExponent = 7;
    int64_t framesOut = 0;
    PromisedLength framesExpected;
    int64_t framesForgotten = 0;
    int64_t framesPadded = 0;
};
