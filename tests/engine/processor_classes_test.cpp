// The whole engine in each processor class that runs here: the classes round differently, and that must stay inaudible.
#include "tests/dsp/each_class.h"
#include "tests/engine/engine_run.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr int32_t kRate = 44100;

struct Case {
    int32_t mode;
    float stretch, pitch, envelope;
};
constexpr Case kCases[] = {
    {kModeEfficient, 1.25f, 1.0f, 1.0f}, {kModeEfficient, 0.7f, 1.5f, 1.0f},    {kModePro, 1.25f, 1.0f, 1.0f},
    {kModePro, 0.7f, 1.5f, 0.0f},        {kModeSoloistMono, 1.25f, 1.5f, 1.0f}, {kModeSoloistSpeech, 1.25f, 1.5f, 1.0f},
};

Planar Render(const Case& c, const char* processorClass)
{
    const ProcessorClass& before = ActiveClass();
    EXPECT_TRUE(SelectClass(processorClass));
    Planar out;
    {
        const EnginePtr engine = MakeEngine(c.mode);
        engine->SetEnvelopeFactor(c.envelope);
        SetFactors(*engine, c.stretch, c.pitch);
        out = RunEngine(*engine, {HarmonicTone(kRate, 220.0, kRate, 0.3)});
    }
    SelectClass(before.name);
    return out;
}

double PowerOf(const Signal& x)
{
    double sum = 0.0;
    for (const float v : x)
        sum += double(v) * v;
    return sum;
}

// Power of the difference to that of the signal, dB.
double Difference(const Signal& a, const Signal& b)
{
    Signal d = a;
    MixInto(&d, b, 0, -1.0f);
    return 10.0 * std::log10(PowerOf(d) / PowerOf(a) + 1e-30);
}

TEST(EngineInEachClass, GivesTheSameSteadyToneWithin90Decibels)
{
    const auto classes = ClassesHere();
    for (const Case& c : kCases) {
        std::vector<Planar> outputs;
        for (const ProcessorClass* p : classes)
            outputs.push_back(Render(c, p->name));
        for (size_t i = 0; i < classes.size(); ++i)
            for (size_t j = i + 1; j < classes.size(); ++j) {
                ASSERT_EQ(outputs[i][0].size(), outputs[j][0].size());
                const double difference = Difference(outputs[i][0], outputs[j][0]);
                EXPECT_LT(difference, -90.0) << "mode " << c.mode << " stretch " << c.stretch << " pitch " << c.pitch
                                             << ": " << classes[i]->name << " and " << classes[j]->name;
            }
    }
}

}   // namespace
