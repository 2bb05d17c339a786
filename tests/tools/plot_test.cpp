#include "tools/plot.h"

#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cairo.h>
#include <memory>
#include <string_view>

namespace {

cairo_status_t ReadSome(void* closure, unsigned char* data, unsigned length)
{
    auto* rest = static_cast<std::string_view*>(closure);
    if (rest->size() < length)
        return CAIRO_STATUS_READ_ERROR;
    std::copy_n(rest->begin(), length, data);
    rest->remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
}

// A curve along the middle of a linear axis, and one at the geometric middle of a logarithmic one, lie on the middle row
// of their panels; the picture tells.
TEST(Plot, CurvesLieWhereTheirValuesSay)
{
    constexpr int kTop = 44, kHeight = 100, kGap = 14;   // the first panel's, in pixels
    Plot plot("A title");
    plot.AddPanel(kHeight, {"", 0.0, 1.0}, {"", -5.0, 15.0}).AddCurve({0.0, 1.0}, {5.0, 5.0}, {kPlotRed, 5.0, ""});
    plot.AddPanel(kHeight, {"time, s", 0.0, 1.0}, {"Hz", 10.0, 1000.0, true})
        .AddCurve({0.0, 0.3, 0.5, 0.7, 1.0}, {100.0, 100.0, NAN, 100.0, 100.0}, {kPlotRed, 5.0, ""});
    const std::string contents = plot.Png();
    std::string_view png = contents;
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> picture(
        cairo_image_surface_create_from_png_stream(ReadSome, &png), cairo_surface_destroy);
    ASSERT_EQ(cairo_surface_status(picture.get()), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_image_surface_get_width(picture.get()), 1400);
    const auto isRed = [&](int x, int y) {
        const unsigned char* p =
            cairo_image_surface_get_data(picture.get()) + y * cairo_image_surface_get_stride(picture.get()) + 4 * x;
        return std::abs(p[2] - 214) < 3 && std::abs(p[1] - 94) < 3 && p[0] < 3;   // blue, green, red in memory
    };
    for (int x : {200, 700, 1300}) {
        EXPECT_TRUE(isRed(x, kTop + kHeight / 2));
        EXPECT_FALSE(isRed(x, kTop + kHeight / 4));
        EXPECT_EQ(isRed(x, kTop + kHeight + kGap + kHeight / 2), x != 700) << "a gap at the NaN";
    }
}

TEST(Spectrogram, FullScaleToneReadsZeroDecibelsAtItsPlace)
{
    const PlotImage image = Spectrogram(Tone(44100, 1000.0, 44100.0), 44100.0, 4096, 50);
    ASSERT_EQ(image.values.size(), image.columns * image.rows);
    const float* middle = image.values.data() + 25 * image.rows;
    const auto loudest = size_t(std::max_element(middle, middle + image.rows) - middle);
    EXPECT_NEAR(image.y0 + double(loudest) * (image.y1 - image.y0) / double(image.rows - 1), 1000.0,
                6.0);   // half a bin
    EXPECT_NEAR(middle[loudest], 0.0, 0.1);
    EXPECT_EQ(Spectrogram({}, 44100.0, 4096).columns, 2u) << "nothing to show is no fault";
}

}   // namespace
