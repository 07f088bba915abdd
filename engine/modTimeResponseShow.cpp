#include "engine/modTimeResponseShow.h"

#include "base/Convert.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "platform/Colours.h"
#include "platform/PlotSurface.h"

namespace {

constexpr const char* kModule = "modTimeResponseShow";

constexpr std::int16_t kDrawSolid = 0;

ui::PlotSurface* mSurface = nullptr;
std::int16_t mnLeft = 0;
std::int16_t mnTop = 0;
std::int16_t mnWidth = 0;
std::int16_t mnHeight = 0;
std::int16_t mnHalfHeight = 0;

ui::PlotSurface& surface()
{
    if (mSurface == nullptr) rt::raise(rt::kErrObjectNotSet);
    return *mSurface;
}

bool isPrinter(const ui::PlotSurface& plot) { return plot.typeName() == "Printer"; }

// The zero line.
std::int16_t mid() { return rt::toInt16(static_cast<double>(mnTop) + mnHalfHeight); }

// A floating-point quotient with the run-time's failures: 0 / 0 overflows,
// anything else over 0 is a division by zero.
double quotient(double numerator, double denominator)
{
    if (denominator == 0.0) rt::raise(numerator == 0.0 ? rt::kErrOverflow : rt::kErrDivisionByZero);
    return numerator / denominator;
}

}  // namespace

std::int16_t gnTimeResponseInit(ui::PlotSurface& plot, std::int16_t nLeft, std::int16_t nTop,
                                std::int16_t nWidth, std::int16_t nHeight, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gnTimeResponseInit", bError);
    std::int16_t nResult = 0;
    trap.step([&] {
        mSurface = &plot;
        mnLeft = nLeft;
        mnTop = nTop;
        mnWidth = rt::toInt16(static_cast<double>(nWidth) - 8);
        mnHeight = rt::toInt16(static_cast<double>(nHeight) - 8);
        mnHalfHeight = static_cast<std::int16_t>(rt::intDiv(mnHeight, 2));
        nResult = mnHalfHeight;
    });
    return nResult;
}

std::int16_t gnTimeResponseShowInitClsDrawAxis(ui::PlotSurface& plot, std::int16_t nLeft,
                                               std::int16_t nTop, std::int16_t nWidth,
                                               std::int16_t nHeight, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gnTimeResponseShowInitClsDrawAxis", bError);
    std::int16_t nResult = 0;
    trap.step([&] {
        nResult = gnTimeResponseInit(plot, nLeft, nTop, nWidth, nHeight, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { gTimeResponseShowClsDrawAxis(bError); });
    return nResult;
}

void gTimeResponseShowClsDrawAxis(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gTimeResponseShowClsDrawAxis", bError);
    trap.step([&] {
        ui::PlotSurface& plot = surface();
        if (!isPrinter(plot)) {
            plot.cls();
            const std::int32_t back = plot.backColor();
            // On the button face the axes take the button text; on any other
            // background its complement.
            plot.setForeColor(back == ui::kColourButtonFace ? ui::kColourButtonText
                                                            : (back & 0xFFFFFF) ^ 0xFFFFFF);
        }
        plot.setDrawStyle(kDrawSolid);
        const std::int16_t right = rt::toInt16(static_cast<double>(mnLeft) + mnWidth);
        const std::int16_t bottom = rt::toInt16(static_cast<double>(mnTop) + mnHeight);
        plot.box(mnLeft, mnTop, right, bottom);
        plot.line(mnLeft, mid(), right, mid());
    });
}

void gTimeResponseShow(const rt::SampleArray& nSamples, Bool16 bSpanByCount, float sngFullScale,
                       std::int32_t lColour, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gTimeResponseShow", bError);
    trap.step([&] {
        const std::int32_t lCount = nSamples.size();
        if (lCount == 0) {
            trap.leave();
            return;
        }
        ui::PlotSurface& plot = surface();
        const float sngXStep = rt::toSingle(
            bSpanByCount ? quotient(mnWidth, lCount) : quotient(mnWidth, static_cast<double>(lCount) - 1));
        const float sngYScale = rt::toSingle(quotient(0.45 * mnHeight, sngFullScale));
        const std::int16_t nMid = mid();
        const std::int32_t lFirst = nSamples.lbound();
        auto sampleAt = [&](std::int32_t i) { return nSamples(lFirst + i - 1); };
        auto pointX = [&](std::int32_t i) {
            return static_cast<float>(static_cast<double>(mnLeft) + static_cast<double>(sngXStep) * i);
        };
        auto pointY = [&](std::int32_t i) {
            return static_cast<float>(nMid) - static_cast<float>(sampleAt(i)) * sngYScale;
        };

        plot.setDrawStyle(kDrawSolid);
        plot.setForeColor(lColour);
        if (bSpanByCount) {
            plot.moveTo(mnLeft, nMid);
        } else {
            // The first point is measured from the half height, not from the top.
            const std::int16_t nFirstY = rt::toInt16(static_cast<float>(mnHalfHeight) -
                                                     static_cast<float>(sampleAt(1)) * sngYScale);
            plot.line(mnLeft, nMid, mnLeft, nFirstY);
        }

        std::int32_t lStep = 1;
        if (lCount > rt::intDiv(mnWidth, 5)) {
            lStep = rt::toInt32(quotient(static_cast<double>(lCount) * 5, mnWidth));
            if (lStep < 5) lStep = 5;
        }
        std::int32_t lLast = 0;
        for (std::int64_t i = 1; i <= lCount; i += lStep) {
            lLast = static_cast<std::int32_t>(i);
            plot.lineTo(pointX(lLast), pointY(lLast));
        }
        if (lLast != lCount) plot.lineTo(pointX(lCount), pointY(lCount));

        if (!isPrinter(plot)) plot.refresh();
    });
}
