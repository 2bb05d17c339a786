#include "bench/compare/peers.h"

#include "bench/fftw_peer.h"

#include <algorithm>
#include <cmath>

#ifdef QX_HAVE_RUBBERBAND
#include <rubberband/RubberBandStretcher.h>
#endif
#ifdef QX_HAVE_SOUNDTOUCH
#include <soundtouch/SoundTouch.h>
#endif

namespace {

[[maybe_unused]] constexpr int64_t kBlock = 4096;

#ifdef QX_HAVE_RUBBERBAND
using RubberBand::RubberBandStretcher;

class Stretcher {
public:
    Stretcher(const Material& input, const Setting& setting, int engine)
        : in(input),
          stretcher(size_t(in.rate), size_t(in.channels),
                    RubberBandStretcher::OptionProcessOffline | RubberBandStretcher::OptionThreadingNever | engine |
                        (setting.holdFormants ? RubberBandStretcher::OptionFormantPreserved
                                              : RubberBandStretcher::OptionFormantShifted),
                    setting.stretch, std::exp2(setting.semitones / 12.0)),
          pieces(size_t(in.channels)), out(size_t(in.channels), std::vector<float>(size_t(kBlock)))
    {
        stretcher.setExpectedInputDuration(size_t(in.Frames()));
        stretcher.setMaxProcessSize(size_t(kBlock));
    }

    int64_t Run()
    {
        ForEachBlock([this](size_t n, bool last) { stretcher.study(pieces.data(), n, last); });
        int64_t frames = 0;
        ForEachBlock([this, &frames](size_t n, bool last) {
            stretcher.process(pieces.data(), n, last);
            frames += Retrieve();
        });
        return frames;
    }

private:
    template <class Take>
    void ForEachBlock(Take take)
    {
        for (int64_t at = 0; at < in.Frames(); at += kBlock) {
            for (size_t c = 0; c < pieces.size(); ++c)
                pieces[c] = in.planar[c].data() + at;
            take(size_t(std::min(kBlock, in.Frames() - at)), at + kBlock >= in.Frames());
        }
    }

    int64_t Retrieve()
    {
        std::vector<float*> to;
        for (auto& channel : out)
            to.push_back(channel.data());
        int64_t frames = 0;
        while (const int ready = std::max(stretcher.available(), 0))   // -1 at the end
            frames += int64_t(stretcher.retrieve(to.data(), size_t(std::min<int64_t>(ready, kBlock))));
        return frames;
    }

    const Material& in;
    RubberBandStretcher stretcher;
    std::vector<const float*> pieces;
    std::vector<std::vector<float>> out;
};

constexpr Peer kFaster{"Rubber Band R2", [](const Material& in, const Setting& setting) {
                           return Stretcher(in, setting, RubberBandStretcher::OptionEngineFaster).Run();
                       }};
constexpr Peer kFiner{"Rubber Band R3", [](const Material& in, const Setting& setting) {
                          return Stretcher(in, setting, RubberBandStretcher::OptionEngineFiner).Run();
                      }};
constexpr const Peer *kFasterHere = &kFaster, *kFinerHere = &kFiner;
#else
constexpr const Peer *kFasterHere = nullptr, *kFinerHere = nullptr;
#endif

#ifdef QX_HAVE_SOUNDTOUCH
int64_t Receive(soundtouch::SoundTouch* st, std::vector<float>* room)
{
    int64_t frames = 0;
    while (const unsigned got = st->receiveSamples(room->data(), unsigned(kBlock)))
        frames += got;
    return frames;
}

int64_t RunSoundTouch(soundtouch::SoundTouch* st, const Material& in, const Setting& setting)
{
    st->setSampleRate(unsigned(in.rate));
    st->setChannels(unsigned(in.channels));
    st->setTempo(1.0 / setting.stretch);
    st->setPitchSemiTones(setting.semitones);
    std::vector<float> room(size_t(kBlock) * size_t(in.channels));
    int64_t frames = 0;
    for (int64_t at = 0; at < in.Frames(); at += kBlock) {
        st->putSamples(in.interleaved.data() + at * in.channels, unsigned(std::min(kBlock, in.Frames() - at)));
        frames += Receive(st, &room);
    }
    st->flush();
    return frames + Receive(st, &room);
}

constexpr Peer kSoundTouch{"SoundTouch", [](const Material& in, const Setting& setting) {
                               soundtouch::SoundTouch st;
                               return RunSoundTouch(&st, in, setting);
                           }};
constexpr Peer kSoundTouchSpeech{"SoundTouch speech", [](const Material& in, const Setting& setting) {
                                     soundtouch::SoundTouch st;   // as soundstretch -speech sets it
                                     st.setSetting(SETTING_SEQUENCE_MS, 40);
                                     st.setSetting(SETTING_SEEKWINDOW_MS, 15);
                                     st.setSetting(SETTING_OVERLAP_MS, 8);
                                     return RunSoundTouch(&st, in, setting);
                                 }};
constexpr const Peer *kSoundTouchHere = &kSoundTouch, *kSoundTouchSpeechHere = &kSoundTouchSpeech;
#else
constexpr const Peer *kSoundTouchHere = nullptr, *kSoundTouchSpeechHere = nullptr;
#endif

void Join(std::string* list, const std::string& entry)
{
    *list += (list->empty() ? "" : ", ") + entry;
}

}   // namespace

const Peer* RubberBandFaster()
{
    return kFasterHere;
}

const Peer* RubberBandFiner()
{
    return kFinerHere;
}

const Peer* SoundTouch()
{
    return kSoundTouchHere;
}

const Peer* SoundTouchSpeech()
{
    return kSoundTouchSpeechHere;
}

std::string PeerVersions()
{
    std::string list;
#ifdef QX_HAVE_RUBBERBAND
    Join(&list, "Rubber Band " RUBBERBAND_VERSION);
#endif
#ifdef QX_HAVE_SOUNDTOUCH
    Join(&list, std::string("SoundTouch ") + soundtouch::SoundTouch::getVersionString());
#endif
    if (kHaveFftw)
        Join(&list, Fftw::Version());
    return list.empty() ? "none" : list;
}
