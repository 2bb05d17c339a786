#include "tools/plot.h"

#include "tests/signals.h"

#include <gtest/gtest.h>

#include <cairo.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace {

class PlotFile : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }
    size_t FilesInFolder() const
    {
        return size_t(
            std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("plot_test." + std::to_string(::getpid()));
};

// A curve along the middle of a linear axis, and one at the geometric middle of a logarithmic one, lie on the middle row
// of their panels; the picture tells.
TEST_F(PlotFile, CurvesLieWhereTheirValuesSay)
{
    constexpr int kTop = 44, kHeight = 100, kGap = 14;   // the first panel's, in pixels
    Plot plot("A title");
    plot.AddPanel(kHeight, {"", 0.0, 1.0}, {"", -5.0, 15.0}).AddCurve({0.0, 1.0}, {5.0, 5.0}, {kPlotRed, 5.0, ""});
    plot.AddPanel(kHeight, {"time, s", 0.0, 1.0}, {"Hz", 10.0, 1000.0, true})
        .AddCurve({0.0, 0.3, 0.5, 0.7, 1.0}, {100.0, 100.0, NAN, 100.0, 100.0}, {kPlotRed, 5.0, ""});
    const auto path = folder / "a.png";
    plot.WritePng(path);

    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> picture(
        cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
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

TEST_F(PlotFile, FailureLeavesTheOldFileAndNothingElse)
{
    Plot plot("A title");
    plot.AddPanel(50, {"x", 0.0, 1.0}, {"y", 0.0, 1.0});
    EXPECT_THROW(plot.WritePng(folder / "missing" / "a.png"), std::runtime_error);
    std::filesystem::create_directory(folder / "taken.png");   // a folder cannot be renamed over
    EXPECT_THROW(plot.WritePng(folder / "taken.png"), std::runtime_error);
    EXPECT_EQ(FilesInFolder(), 1u);
    std::ofstream(folder / "old.png") << "old";
    plot.WritePng(folder / "old.png");
    EXPECT_GT(std::filesystem::file_size(folder / "old.png"), 1000u);
    EXPECT_EQ(FilesInFolder(), 2u);
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
