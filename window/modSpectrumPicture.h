#pragma once
// The spectrum as the plot shows it: the level of every bin in dBFS, from
// 0 at the top to the floor (-140) at the bottom, against a logarithmic
// frequency axis from 10 Hz to half the rate, over a grid with its labels,
// and the figures read from it as lines of text at the top right.
#include <string>
#include <vector>

#include <QColor>
#include <QRect>

#include "analysis/modSpectrum.h"

class QPainter;

// The lowest frequency the axis shows.
inline constexpr double kSpectrumLowestHz = 10;

struct SpectrumColours {
    QColor trace;
    QColor grid;
    QColor ink;   // labels and the readout
};

// The readout of tFigures: frequency, level (with the volts a full-scale
// sine makes when fVoltsFullScale > 0), THD, THD+N and SINAD. A figure
// that does not exist reads "—" (no tone) and one at the floor reads
// "below -140 dB", so the text never shows an infinity or NaN.
std::vector<std::string> gsSpectrumReadout(const SpectrumFigures& tFigures, double fVoltsFullScale);

// Draws tSpectrum into rArea (cleared by the caller), the readout lines at
// the top right. A spectrum without bins draws the grid alone.
void gSpectrumPaint(QPainter& painter, const QRect& rArea, const Spectrum& tSpectrum,
                    const std::vector<std::string>& asReadout, const SpectrumColours& tColours);

// The horizontal position of fHz on the axis of rArea for a spectrum of
// lSampleRate; what the drawing and its tests share.
double gdSpectrumX(const QRect& rArea, double fHz, std::int32_t lSampleRate);
