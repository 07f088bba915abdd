#pragma once
// Printing a window: one page that draws the window control by control
// (frames, captions, field values, check and option states, the tab page on
// show), scaled to fit the page and drawn at the printer's resolution, with
// a byline under it. A plot's picture box is not copied from the screen: the
// caller redraws the plot on the printer surface, in the box's place.
#include <functional>
#include <string>

class QPrinter;
class QRect;
class QWidget;

namespace ui {
class PlotSurface;
}

// Draws the plot on the printer surface inside `area` (printer units).
using PlotRedraw = std::function<void(ui::PlotSurface& surface, const QRect& area)>;

// Prints `form` on one page of `printer`. A printer that writes a file writes
// it whole or not at all: the page goes into a temporary file beside it,
// renamed over it once complete. Returns what failed, for the user (empty
// when the page was printed).
std::string gsPrintForm(QWidget& form, QPrinter& printer, const std::string& byline,
                        const PlotRedraw& redrawPlot);
