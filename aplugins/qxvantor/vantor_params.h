// The filter's one parameter record: what the driver takes, presets hold and the host stores, byte for byte.
#pragma once

#include <cstddef>
#include <cstdint>

struct QxVantorParams {
    int32_t mode;               // engine mode, 0 to 5
    int32_t reserved0;          // 0
    double stretchPercent;      // 100 leaves the length as it is; 10 to 1000
    double pitchSemitones;      // fractions for cents; -24 to 24
    int32_t auxFlag;            // carried along
    int32_t reserved1;          // 0
    double auxSemitones;        // carried along
    double formantPercent;      // 100 lets the formants follow the pitch, 0 holds them
    int32_t contentPitch;       // 3 to 9: 44100 / 2^(12 - index) Hz
    int32_t reserved2;          // 0
    double sourceFrames;        // length of the source material in frames, 0 when unknown
    int32_t tempoFallback;      // hundredths of a beat per minute, used when tempo is out of range
    int32_t tempo;              // hundredths of a beat per minute, 0 when unknown
    int32_t syncPitch;          // 0 or 1
    int32_t bypass;             // 0 or 1
    int32_t reservedA;          // 0, carried along
    int32_t sourceRate;         // sample rate of the source material in Hz, 0 when unknown
};

static_assert(sizeof(QxVantorParams) == 88);
static_assert(offsetof(QxVantorParams, stretchPercent) == 8 && offsetof(QxVantorParams, auxFlag) == 24);
static_assert(offsetof(QxVantorParams, auxSemitones) == 32 && offsetof(QxVantorParams, contentPitch) == 48);
static_assert(offsetof(QxVantorParams, sourceFrames) == 56 && offsetof(QxVantorParams, tempoFallback) == 64);
static_assert(offsetof(QxVantorParams, bypass) == 76 && offsetof(QxVantorParams, sourceRate) == 84);
