// The parts of the example recording, all synthesised, so that it is nobody else's: plucked and held chords with a bass,
// a drum kit, and a voice that sings a phrase of vowels with a few unvoiced consonants. Deterministic: the same seconds
// and rate give the same samples.
#pragma once

#include <cstdint>
#include <vector>

struct StereoSignal {
    std::vector<float> left, right;   // full scale is 1.0
};

StereoSignal SynthesiseMusic(double sampleRate, double seconds);
StereoSignal SynthesiseDrums(double sampleRate, double seconds);
StereoSignal SynthesiseVoice(double sampleRate, double seconds);
