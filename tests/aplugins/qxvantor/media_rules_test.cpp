// Which formats connect, through the filter's own pins.
#include "aplugins/qxvantor/media_rules.h"
#include "aplugins/qxvantor/prop2.h"
#include "platform/media/mem_allocator.h"
#include "tests/aplugins/qxvantor/filter_rig.h"

#include <gtest/gtest.h>

namespace {

WAVEFORMATEXTENSIBLE With(WAVEFORMATEXTENSIBLE format, auto change)
{
    change(format);
    return format;
}

}   // namespace

TEST(MediaRules, TheInputTakesFloatAudioOfUpTo32Channels)
{
    const auto plain = FloatFormat(2, 44100), extensible = FloatFormat(2, 44100, true);
    const ULONG cbPlain = sizeof(WAVEFORMATEX), cbExtensible = sizeof(WAVEFORMATEXTENSIBLE);
    struct {
        const char* what;
        CMediaType type;
        HRESULT expected;
    } cases[] = {
        {"plain", AudioType(plain, cbPlain), S_OK},
        {"without cbSize", AudioType(plain, 16), S_OK},
        {"extensible", AudioType(extensible, cbExtensible), S_OK},
        {"1 channel", FloatType(1, 8000), S_OK},
        {"32 channels", FloatType(32, 384000), S_OK},
        {"0 channels", FloatType(0, 44100), VFW_E_TYPE_NOT_ACCEPTED},
        {"33 channels", FloatType(33, 44100), VFW_E_TYPE_NOT_ACCEPTED},
        {"15 bytes", AudioType(plain, 15), VFW_E_TYPE_NOT_ACCEPTED},
        {"PCM", AudioType(With(plain, [](auto& f) { f.Format.wFormatTag = WAVE_FORMAT_PCM; }), cbPlain),
         VFW_E_TYPE_NOT_ACCEPTED},
        {"64 bit", AudioType(With(plain, [](auto& f) { f.Format.wBitsPerSample = 64; }), cbPlain),
         VFW_E_TYPE_NOT_ACCEPTED},
        {"24 bit", AudioType(With(extensible, [](auto& f) { f.Format.wBitsPerSample = 24; }), cbExtensible),
         VFW_E_TYPE_NOT_ACCEPTED},
        {"cbSize 21", AudioType(With(extensible, [](auto& f) { f.Format.cbSize = 21; }), cbExtensible),
         VFW_E_TYPE_NOT_ACCEPTED},
        {"extensible PCM", AudioType(With(extensible, [](auto& f) { f.SubFormat = MEDIASUBTYPE_PCM; }), cbExtensible),
         VFW_E_TYPE_NOT_ACCEPTED},
        {"extensible cut short", AudioType(extensible, cbPlain), VFW_E_TYPE_NOT_ACCEPTED},
        {"7999 Hz", FloatType(2, 7999), VFW_E_TYPE_NOT_ACCEPTED},
        {"384001 Hz", FloatType(2, 384001), VFW_E_TYPE_NOT_ACCEPTED},
    };
    for (auto& c : cases) {
        FilterRig rig;
        EXPECT_EQ(rig.ConnectInput(c.type), c.expected) << c.what;
    }
    CMediaType video = FloatType(2, 44100), compressed = FloatType(2, 44100);
    video.majortype = MEDIATYPE_Video;
    compressed.bTemporalCompression = TRUE;
    EXPECT_EQ(CheckInputFormat(video), E_INVALIDARG);
    EXPECT_EQ(CheckInputFormat(compressed), E_INVALIDARG);
    EXPECT_EQ(CheckInputFormat(FloatType(33, 44100)), E_INVALIDARG);
}

TEST(MediaRules, TheOutputIsOfferedInTheInputsFormAlone)
{
    FilterRig rig;
    CMediaType offered;
    EXPECT_EQ(rig.filter->GetMediaType(0, &offered), E_UNEXPECTED);
    ASSERT_EQ(rig.ConnectInput(AudioType(FloatFormat(6, 48000, true), sizeof(WAVEFORMATEXTENSIBLE))), S_OK);
    EXPECT_EQ(rig.filter->GetMediaType(-1, &offered), E_INVALIDARG);
    EXPECT_EQ(rig.filter->GetMediaType(1, &offered), VFW_S_NO_MORE_ITEMS);
    ASSERT_EQ(rig.filter->GetMediaType(0, &offered), S_OK);
    WAVEFORMATEX format;
    std::memcpy(&format, offered.pbFormat, sizeof format);
    EXPECT_EQ(format.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
    EXPECT_EQ(format.cbSize, 0);
    EXPECT_EQ(format.nBlockAlign, 24);
    EXPECT_EQ(format.nAvgBytesPerSec, 24u * 48000u);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);

    const auto stored = rig.Interface<IQxVantorProp2>(IID_IQxVantorProp2);
    for (DWORD pin : {0u, 1u}) {
        ASSERT_EQ(stored->GetWaveFormat(&format, pin), S_OK);
        EXPECT_EQ(format.wFormatTag, WAVE_FORMAT_IEEE_FLOAT) << "kept in its plain form";
        EXPECT_EQ(format.cbSize, 0);
        EXPECT_EQ(format.nChannels, 6);
    }
    EXPECT_EQ(stored->GetWaveFormat(&format, 2), VFW_E_NOT_CONNECTED);
    rig.DisconnectOutput();
    EXPECT_EQ(stored->GetWaveFormat(&format, 1), VFW_E_NOT_CONNECTED);
}

TEST(MediaRules, InputAndOutputAgreeInAllThatCounts)
{
    const auto base = FloatFormat(2, 44100);
    const CMediaType in = AudioType(base, sizeof(WAVEFORMATEX));
    EXPECT_EQ(CheckSameFormat(in, in), S_OK);
    for (const auto change : std::initializer_list<void (*)(WAVEFORMATEX&)>{
             [](WAVEFORMATEX& f) { f.nChannels = 1; }, [](WAVEFORMATEX& f) { f.nSamplesPerSec = 48000; },
             [](WAVEFORMATEX& f) { f.wBitsPerSample = 64; }, [](WAVEFORMATEX& f) { f.wFormatTag = 0xFFFE; }}) {
        auto other = base;
        change(other.Format);
        EXPECT_EQ(CheckSameFormat(in, AudioType(other, sizeof(WAVEFORMATEX))), E_INVALIDARG);
    }
    EXPECT_EQ(CheckSameFormat(FloatType(48, 44100), FloatType(48, 44100)), S_OK);
    EXPECT_EQ(CheckSameFormat(FloatType(49, 44100), FloatType(49, 44100)), E_INVALIDARG);
    EXPECT_EQ(CheckSameFormat(FloatType(0, 44100), FloatType(0, 44100)), E_INVALIDARG);
}

TEST(MediaRules, AConnectedOutputHasItsSay)
{
    FilterRig rig;
    rig.take->pin.accept = [](const CMediaType& type) {
        WAVEFORMATEX format;
        std::memcpy(&format, type.pbFormat, sizeof format);
        return format.nSamplesPerSec == 44100;
    };
    ASSERT_EQ(rig.ConnectInput(FloatType(2, 44100)), S_OK);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    rig.DisconnectInput();
    EXPECT_EQ(rig.ConnectInput(FloatType(2, 48000)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(rig.ConnectInput(FloatType(2, 44100)), S_OK);
    // What is the same to the filter may still be refused by its peer.
    rig.DisconnectInput();
    rig.take->pin.accept = [](const CMediaType&) { return false; };
    EXPECT_EQ(rig.ConnectInput(FloatType(2, 44100)), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST(MediaRules, OutputBuffersAreTenTimesTheInputs)
{
    FilterRig rig;
    rig.feed->pin.cbBuffer = 4096;
    ASSERT_EQ(rig.ConnectInput(FloatType(2, 44100)), S_OK);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    ComPtr<IMemAllocator> allocator;
    ASSERT_EQ(rig.take->pin.GetAllocator(allocator.Out()), S_OK);
    ALLOCATOR_PROPERTIES properties;
    allocator->GetProperties(&properties);
    EXPECT_EQ(properties.cbBuffer, 40960);
    EXPECT_EQ(properties.cBuffers, 2);
    EXPECT_EQ(properties.cbAlign, 16);

    ALLOCATOR_PROPERTIES least = {};
    ComPtr<IMemAllocator> other(new CMemAllocator);
    FilterRig::Feed* const feed = rig.feed;
    rig.DisconnectInput();
    feed->pin.cbBuffer = 48;
    ASSERT_EQ(rig.ConnectInput(FloatType(2, 44100)), S_OK);
    EXPECT_EQ(rig.filter->DecideBufferSize(other.Get(), &least), E_FAIL) << "below 512 bytes";
    EXPECT_EQ(least.cbBuffer, 480);
}
