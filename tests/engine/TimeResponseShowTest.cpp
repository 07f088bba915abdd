// The time response plot drawn on a recording surface: the axes, where the
// line starts, how long arrays are thinned, and the printer's differences.
#include <gtest/gtest.h>

#include <cstdint>

#include "base/Array.h"
#include "engine/modTimeResponseShow.h"
#include "platform/Colours.h"
#include "tests/support/RecordingSurface.h"

namespace {

using testing_support::RecordingSurface;
using Kind = RecordingSurface::Kind;

using ui::kColourButtonFace;
using ui::kColourButtonText;

rt::SampleArray samplesOf(std::int32_t count, std::int16_t value = 0)
{
    rt::SampleArray samples;
    samples.redim(1, count);
    for (std::int32_t i = 1; i <= count; ++i) samples(i) = value;
    return samples;
}

// A plot at (10, 20) of 408 x 208: 400 x 200 inside, zero line at 120.
class TimeResponse : public ::testing::Test {
protected:
    RecordingSurface screen;
    ErrorFlag bError = kFalse;

    void SetUp() override
    {
        ASSERT_EQ(gnTimeResponseShowInitClsDrawAxis(screen, 10, 20, 408, 208, bError), 100);
        ASSERT_FALSE(bError);
        screen.ops.clear();
    }
    std::vector<RecordingSurface::Op> plot(const rt::SampleArray& samples, Bool16 spanByCount,
                                           float fullScale = 32767, std::int32_t colour = 255)
    {
        gTimeResponseShow(samples, spanByCount, fullScale, colour, bError);
        return screen.ops;
    }
};

TEST(TimeResponseAxes, FrameAndZeroLineInTheButtonTextColourOnAButtonFace)
{
    RecordingSurface screen("PictureBox", kColourButtonFace);
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gnTimeResponseShowInitClsDrawAxis(screen, 10, 20, 408, 208, bError), 100);
    ASSERT_EQ(screen.ops.size(), 3u);
    EXPECT_EQ(screen.ops[0].kind, Kind::Cls);
    const auto& frame = screen.ops[1];
    EXPECT_EQ(frame.kind, Kind::Box);
    EXPECT_EQ(frame.colour, kColourButtonText);
    EXPECT_EQ(frame.style, 0);
    EXPECT_EQ((std::vector<float>{frame.x1, frame.y1, frame.x2, frame.y2}),
              (std::vector<float>{10, 20, 410, 220}));
    const auto& zero = screen.ops[2];
    EXPECT_EQ(zero.kind, Kind::Line);
    EXPECT_EQ((std::vector<float>{zero.x1, zero.y1, zero.x2, zero.y2}),
              (std::vector<float>{10, 120, 410, 120}));
}

TEST(TimeResponseAxes, OnAnyOtherBackgroundTheAxesTakeItsInverse)
{
    RecordingSurface screen("PictureBox", 0x00204080);
    ErrorFlag bError = kFalse;
    gnTimeResponseShowInitClsDrawAxis(screen, 0, 0, 100, 100, bError);
    EXPECT_EQ(screen.only(Kind::Box).at(0).colour, 0x00DFBF7F);
}

TEST(TimeResponseAxes, ThePrinterIsNeitherClearedNorRefreshedNorRecoloured)
{
    RecordingSurface printer("Printer", 0x00FFFFFF);
    printer.setForeColor(0x00123456);
    printer.setDrawStyle(2);
    ErrorFlag bError = kFalse;
    gnTimeResponseShowInitClsDrawAxis(printer, 0, 0, 208, 108, bError);
    EXPECT_TRUE(printer.only(Kind::Cls).empty());
    EXPECT_EQ(printer.only(Kind::Box).at(0).colour, 0x00123456);
    EXPECT_EQ(printer.only(Kind::Box).at(0).style, 0) << "the pen is set solid all the same";

    gTimeResponseShow(samplesOf(10, 100), kTrue, 32767, 255, bError);
    EXPECT_FALSE(bError);
    EXPECT_TRUE(printer.only(Kind::Refresh).empty());
    EXPECT_FALSE(printer.only(Kind::LineTo).empty());
}

TEST_F(TimeResponse, AnEmptyArrayDrawsNothing)
{
    EXPECT_TRUE(plot(rt::SampleArray(), kTrue).empty());
    EXPECT_FALSE(bError);
}

TEST_F(TimeResponse, SpanByCountStartsOnTheZeroLineOneStepBeforeTheFirstPoint)
{
    auto samples = samplesOf(40);
    samples(1) = 32767;
    const auto ops = plot(samples, kTrue, 32767, ui::kColourGreen);
    ASSERT_EQ(ops.front().kind, Kind::MoveTo);
    EXPECT_EQ(ops.front().x2, 10);
    EXPECT_EQ(ops.front().y2, 120);
    const auto lines = screen.only(Kind::LineTo);
    ASSERT_EQ(lines.size(), 40u) << "few enough points to draw every one";
    EXPECT_FLOAT_EQ(lines[0].x2, 10 + 400.0f / 40) << "x step = width / n";
    EXPECT_NEAR(lines[0].y2, 120 - 90, 0.01) << "full scale reaches 0.9 of the half height";
    EXPECT_FLOAT_EQ(lines[39].x2, 410);
    EXPECT_EQ(lines[0].colour, ui::kColourGreen);
    EXPECT_EQ(ops.back().kind, Kind::Refresh);
}

TEST_F(TimeResponse, OtherwiseALineRisesToTheFirstSampleMeasuredFromTheHalfHeight)
{
    auto samples = samplesOf(41);
    samples(1) = -32767;
    const auto ops = plot(samples, kFalse);
    ASSERT_EQ(ops.front().kind, Kind::Line);
    EXPECT_EQ((std::vector<float>{ops.front().x1, ops.front().y1, ops.front().x2, ops.front().y2}),
              (std::vector<float>{10, 120, 10, 190}))
        << "100 + 90, without the top of 20";
    const auto lines = screen.only(Kind::LineTo);
    EXPECT_FLOAT_EQ(lines.front().x2, 10 + 400.0f / 40) << "x step = width / (n - 1), from point 1";
    EXPECT_FLOAT_EQ(lines.back().x2, 10 + 400.0f / 40 * 41);
    EXPECT_FLOAT_EQ(lines.front().y2, 120 + 90);
}

TEST_F(TimeResponse, LongArraysAreThinnedToEveryKthPointEndingOnTheLast)
{
    // width \ 5 = 80 points are drawn one by one; one more and every fifth
    // sample is drawn.
    plot(samplesOf(80), kTrue);
    EXPECT_EQ(screen.only(Kind::LineTo).size(), 80u);

    screen.ops.clear();
    plot(samplesOf(81), kTrue);
    auto lines = screen.only(Kind::LineTo);
    EXPECT_EQ(lines.size(), 17u) << "points 1, 6, ... 81";
    EXPECT_FLOAT_EQ(lines[1].x2, 10 + 400.0f / 81 * 6);

    screen.ops.clear();
    plot(samplesOf(83), kTrue);
    lines = screen.only(Kind::LineTo);
    ASSERT_EQ(lines.size(), 18u) << "points 1, 6, ... 81, then 83";
    EXPECT_FLOAT_EQ(lines[16].x2, 10 + 400.0f / 83 * 81);
    EXPECT_FLOAT_EQ(lines[17].x2, 410);

    // 1000 * 5 / 400 = 12.5 rounds to the even 12.
    screen.ops.clear();
    plot(samplesOf(1000), kTrue);
    lines = screen.only(Kind::LineTo);
    ASSERT_EQ(lines.size(), 84u + 1);
    EXPECT_FLOAT_EQ(lines[1].x2, 10 + 0.4f * 13);
    EXPECT_FLOAT_EQ(lines[83].x2, static_cast<float>(10 + 0.4 * 997));
}

TEST_F(TimeResponse, ASingleSampleWithoutSpanByCountIsADivisionByZero)
{
    plot(samplesOf(1), kFalse);
    EXPECT_TRUE(bError);
    EXPECT_TRUE(screen.only(Kind::LineTo).empty());
}

TEST(TimeResponseInit, ARectangleTooSmallForTheMarginFails)
{
    RecordingSurface screen;
    ErrorFlag bError = kFalse;
    gnTimeResponseInit(screen, 0, 0, -32767, 100, bError);
    EXPECT_TRUE(bError) << "width - 8 overflows 16 bits";
}

}  // namespace
