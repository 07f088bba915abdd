#include "window/modSpectrumPicture.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <QFontMetrics>
#include <QPainter>

#include "base/NumberText.h"

namespace {

constexpr const char* kNoFigure = "\u2014";
// dB between the grid's horizontal lines.
constexpr double kLevelGridDb = 20;
// Room for the labels: left of the plot and under it, in pixels.
constexpr int kLabelWidth = 36;
constexpr int kLabelHeight = 16;

double upperHz(std::int32_t lSampleRate) { return std::max(lSampleRate / 2.0, kSpectrumLowestHz * 2); }

QRect plotArea(const QRect& rArea)
{
    return rArea.adjusted(kLabelWidth, kLabelHeight / 2, -8, -kLabelHeight);
}

double levelY(const QRect& plot, double levelDb)
{
    const double clamped = std::clamp(levelDb, kSpectrumFloorDb, 0.0);
    return plot.top() + clamped / kSpectrumFloorDb * plot.height();
}

double xOnPlot(const QRect& plot, double hz, std::int32_t lSampleRate)
{
    const double span = std::log10(upperHz(lSampleRate) / kSpectrumLowestHz);
    const double along = std::log10(std::max(hz, kSpectrumLowestHz) / kSpectrumLowestHz) / span;
    return plot.left() + along * plot.width();
}

std::string fixed(double value, const char* pattern) { return rt::formatNumber(value, pattern); }

// A decibel figure: at the floor it is "below" it.
std::string decibels(double value, const char* unit)
{
    if (value <= kSpectrumFloorDb) return std::string("below ") + fixed(kSpectrumFloorDb, "0") + " " + unit;
    return fixed(value, "0.0") + " " + unit;
}

// 1, 2 and 5 of every decade within the axis, and which of them is labelled.
struct GridLine {
    double hz;
    bool labelled;
};

std::vector<GridLine> frequencyLines(std::int32_t lSampleRate)
{
    std::vector<GridLine> lines;
    for (double decade = kSpectrumLowestHz; decade <= upperHz(lSampleRate); decade *= 10) {
        for (const double step : {1.0, 2.0, 5.0}) {
            const double hz = decade * step;
            if (hz <= upperHz(lSampleRate)) lines.push_back({hz, step == 1.0});
        }
    }
    return lines;
}

std::string frequencyLabel(double hz)
{
    return hz >= 1000 ? fixed(hz / 1000, "0") + "k" : fixed(hz, "0");
}

void paintGrid(QPainter& painter, const QRect& plot, std::int32_t lSampleRate,
               const SpectrumColours& colours)
{
    const QFontMetrics metrics(painter.font());
    for (double db = 0; db >= kSpectrumFloorDb; db -= kLevelGridDb) {
        const double y = levelY(plot, db);
        painter.setPen(colours.grid);
        painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
        painter.setPen(colours.ink);
        const QString label = QString::number(static_cast<int>(db));
        painter.drawText(QPointF(plot.left() - 4 - metrics.horizontalAdvance(label), y + metrics.ascent() / 2.0),
                         label);
    }
    for (const GridLine& line : frequencyLines(lSampleRate)) {
        const double x = xOnPlot(plot, line.hz, lSampleRate);
        painter.setPen(colours.grid);
        painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        if (!line.labelled) continue;
        painter.setPen(colours.ink);
        const QString label = QString::fromStdString(frequencyLabel(line.hz));
        painter.drawText(QPointF(x - metrics.horizontalAdvance(label) / 2.0, plot.bottom() + metrics.ascent() + 2),
                         label);
    }
    painter.setPen(colours.ink);
    painter.drawRect(plot);
}

// The loudest bin under each pixel column, so that a narrow tone shows at
// its full height however many bins share a column.
std::vector<std::optional<double>> columnPeaks(const QRect& plot, const Spectrum& spectrum)
{
    std::vector<std::optional<double>> peaks(static_cast<std::size_t>(std::max(plot.width(), 0)));
    for (std::size_t k = 1; k < spectrum.levelDb.size(); ++k) {
        const double hz = static_cast<double>(k) * spectrum.binWidth;
        if (hz < kSpectrumLowestHz) continue;
        const int column = static_cast<int>(xOnPlot(plot, hz, spectrum.sampleRate)) - plot.left();
        if (column < 0 || column >= static_cast<int>(peaks.size())) continue;
        auto& peak = peaks[static_cast<std::size_t>(column)];
        peak = std::max(peak.value_or(kSpectrumFloorDb), static_cast<double>(spectrum.levelDb[k]));
    }
    return peaks;
}

void paintTrace(QPainter& painter, const QRect& plot, const Spectrum& spectrum, const QColor& trace)
{
    painter.setPen(trace);
    std::optional<QPointF> last;
    const auto peaks = columnPeaks(plot, spectrum);
    for (std::size_t column = 0; column < peaks.size(); ++column) {
        if (!peaks[column]) continue;
        const QPointF here(plot.left() + static_cast<double>(column), levelY(plot, *peaks[column]));
        painter.drawLine(last.value_or(here), here);
        last = here;
    }
}

void paintReadout(QPainter& painter, const QRect& plot, const std::vector<std::string>& readout,
                  const QColor& ink)
{
    const QFontMetrics metrics(painter.font());
    int width = 0;
    for (const std::string& line : readout)
        width = std::max(width, metrics.horizontalAdvance(QString::fromStdString(line)));
    const int x = plot.right() - width - 6;
    int y = plot.top() + 4 + metrics.ascent();
    painter.setPen(ink);
    for (const std::string& line : readout) {
        painter.drawText(QPointF(x, y), QString::fromStdString(line));
        y += metrics.lineSpacing();
    }
}

}  // namespace

double gdSpectrumX(const QRect& rArea, double fHz, std::int32_t lSampleRate)
{
    return xOnPlot(plotArea(rArea), fHz, lSampleRate);
}

std::vector<std::string> gsSpectrumReadout(const SpectrumFigures& tFigures, double fVoltsFullScale)
{
    if (!tFigures.tone) {
        return {"Frequency: " + std::string(kNoFigure), "Level: " + decibels(tFigures.totalLevelDb, "dBFS"),
                "THD: " + std::string(kNoFigure), "THD+N: " + std::string(kNoFigure),
                "SINAD: " + std::string(kNoFigure)};
    }
    std::string level = "Level: " + decibels(tFigures.levelDb, "dBFS");
    if (fVoltsFullScale > 0)
        level += " (" + fixed(fVoltsFullScale * std::pow(10.0, tFigures.levelDb / 20), "0.000") + " V)";
    return {"Frequency: " + fixed(tFigures.frequency, "0.000") + " Hz", level,
            "THD: " + decibels(tFigures.thdDb, "dB"), "THD+N: " + decibels(tFigures.thdnDb, "dB"),
            "SINAD: " + decibels(tFigures.sinadDb, "dB")};
}

void gSpectrumPaint(QPainter& painter, const QRect& rArea, const Spectrum& tSpectrum,
                    const std::vector<std::string>& asReadout, const SpectrumColours& tColours)
{
    const QRect plot = plotArea(rArea);
    if (plot.width() < 2 || plot.height() < 2) return;
    painter.save();
    paintGrid(painter, plot, tSpectrum.sampleRate, tColours);
    painter.setClipRect(plot);
    paintTrace(painter, plot, tSpectrum, tColours.trace);
    paintReadout(painter, plot, asReadout, tColours.ink);
    painter.restore();
}
