#include "dsp/simple_filter.h"

#include "tests/signals.h"

#include <gtest/gtest.h>

namespace {

SimpleIirPtr MakeIir(float a)
{
    CSimpleIIRFilter* filter = nullptr;
    CreateIIR(&filter, a);
    return SimpleIirPtr(filter);
}

SimpleFirPtr MakeFir(float a)
{
    CSimpleFIRFilter* filter = nullptr;
    CreateFIR(&filter, a);
    return SimpleFirPtr(filter);
}

TEST(SimpleFilter, ImpulseResponsesAreTheClosedForms)
{
    Signal impulse(30, 0.0f), low(30), high(30);
    impulse[0] = 1.0f;
    MakeIir(-0.9f)->Process(impulse.data(), low.data(), 30);
    MakeFir(-0.5f)->Process(impulse.data(), high.data(), 30);
    for (int32_t n = 0; n < 30; ++n) {
        EXPECT_NEAR(low[size_t(n)], 0.1 * std::pow(0.9, n), 1e-7) << n;
        EXPECT_EQ(high[size_t(n)], n == 0 ? 0.5f : n == 1 ? -0.5f : 0.0f) << n;
    }
}

// Sample by sample, whole, in place and in pieces (one of them empty) are one and the same recursion.
template <typename Make>
void ExpectAllFormsAgree(Make make)
{
    const Signal x = Noise(101, 1);
    Signal bySample(101), inPlace = x, pieces(101), whole(101);
    const auto a = make(), b = make(), c = make(), d = make();
    for (size_t i = 0; i < x.size(); ++i)
        bySample[i] = a->ProcessSample(x[i]);
    b->ProcessInPlace(inPlace.data(), 101);
    c->Process(x.data(), pieces.data(), 7);
    c->Process(x.data() + 7, pieces.data() + 7, 0);
    c->Process(x.data() + 7, pieces.data() + 7, 94);
    d->Process(x.data(), whole.data(), 101);
    EXPECT_EQ(bySample, whole);
    EXPECT_EQ(inPlace, whole);
    EXPECT_EQ(pieces, whole);
}

TEST(SimpleFilter, EveryFormOfTheOperationGivesTheSameSamples)
{
    ExpectAllFormsAgree([] { return MakeIir(-0.9f); });
    ExpectAllFormsAgree([] { return MakeFir(-0.5f); });
}

TEST(SimpleFilter, SilenceStaysClearOfDenormals)
{
    const auto filter = MakeIir(-0.9f);
    Signal x(2000, 0.0f);
    x[0] = 1.0f;
    filter->ProcessInPlace(x.data(), 2000);
    EXPECT_NEAR(x.back(), 1e-23f, 1e-24f);   // 1e-24 / (1 - 0.9)
}

}   // namespace
