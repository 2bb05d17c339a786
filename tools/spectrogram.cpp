#include "dsp/fft.h"
#include "dsp/status.h"
#include "tools/plot.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

PlotImage Spectrogram(const std::vector<float>& samples, double sampleRate, int fftLength, size_t columns)
{
    CFFT* transform = nullptr;
    if (CreateFFT(&transform, fftLength, 0) != kSuccess)
        throw std::bad_alloc();
    const std::unique_ptr<CFFT> fft(transform);

    PlotImage image;
    image.columns = std::max<size_t>(2, std::min(columns, samples.size() / 16 + 2));
    image.rows = size_t(fftLength / 2);
    image.values.resize(image.columns * image.rows);
    image.x1 = std::max(1.0, double(samples.size())) / sampleRate;
    image.y1 = sampleRate / 2.0 * double(image.rows - 1) / double(image.rows);

    const int frameLength = fftLength / 4;
    std::vector<float> frame(size_t(fftLength), 0.0f);
    for (size_t column = 0; column < image.columns; ++column) {
        const auto centre = std::ptrdiff_t(double(column) / double(image.columns - 1) * double(samples.size()));
        std::fill(frame.begin(), frame.end(), 0.0f);
        for (int i = 0; i < frameLength; ++i) {
            const std::ptrdiff_t at = centre - frameLength / 2 + i;
            const double window = 0.5 - 0.5 * std::cos(2.0 * 3.14159265358979 * (i + 0.5) / frameLength);
            if (at >= 0 && at < std::ptrdiff_t(samples.size()))
                frame[size_t(i)] = float(window * samples[size_t(at)]);
        }
        fft->Forward(frame.data());
        fft->ToMagnitude(frame.data());
        for (size_t row = 0; row < image.rows; ++row)   // a full-scale sine reads 0 dB
            image.values[column * image.rows + row] = float(20.0 * std::log10(frame[row] * 4.0 / frameLength + 1e-9));
    }
    return image;
}
