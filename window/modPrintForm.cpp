#include "window/modPrintForm.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QFontInfo>
#include <QFontMetrics>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryFile>

#include "controls/PrinterSurface.h"
#include "controls/UpDown.h"

namespace {

// The controls are drawn in the window's own pixels, which the painter maps
// onto the page; lines are a window pixel wide, as on screen.
constexpr qreal kLineWidth = 1;
// Text inside a box keeps this far from its edge (window pixels).
constexpr int kInset = 3;
constexpr int kBylinePoints = 9;
const QColor kThumbFill(200, 200, 200);

struct Page {
    QPainter& painter;
    const QWidget& form;
    QPoint origin;  // of the printed part of the form, in its coordinates
    qreal scale;    // printer units per window pixel
    const PlotRedraw& redrawPlot;
};

// A caption as shown: "Ou&t" reads "Out", "&&" is one "&".
QString plainCaption(const QString& caption)
{
    QString plain;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && i + 1 < caption.size()) ++i;
        plain += caption[i];
    }
    return plain;
}

QRect rectOf(const Page& page, const QWidget& widget)
{
    return {widget.mapTo(&page.form, QPoint(0, 0)) - page.origin, widget.size()};
}

// Pen and font of a control: grey when it is disabled, its font at its
// screen size.
void useStyleOf(const Page& page, const QWidget& widget, bool bold = false)
{
    page.painter.setPen(QPen(widget.isEnabled() ? Qt::black : Qt::gray, kLineWidth));
    page.painter.setBrush(Qt::NoBrush);
    QFont font = widget.font();
    font.setPixelSize(QFontInfo(widget.font()).pixelSize());
    font.setBold(bold);
    page.painter.setFont(font);
}

void drawControl(const Page& page, const QWidget& widget);

void drawChildren(const Page& page, const QWidget& parent)
{
    for (QObject* child : parent.children()) {
        const auto* widget = qobject_cast<const QWidget*>(child);
        if (widget != nullptr && !widget->isWindow() && widget->isVisibleTo(&page.form))
            drawControl(page, *widget);
    }
}

void drawLabel(const Page& page, const QLabel& label)
{
    useStyleOf(page, label);
    int flags = static_cast<int>(label.alignment());
    if (label.wordWrap()) flags |= Qt::TextWordWrap;
    // A label names its buddy's access key with "&", as the screen shows it.
    const QString text = label.buddy() != nullptr ? plainCaption(label.text()) : label.text();
    page.painter.drawText(rectOf(page, label), flags, text);
}

void drawTextBox(const Page& page, const QLineEdit& box)
{
    useStyleOf(page, box);
    const QRect rect = rectOf(page, box);
    page.painter.drawRect(rect);
    const QString text = box.echoMode() == QLineEdit::Normal ? box.text() : QString();
    page.painter.drawText(rect.adjusted(kInset, 0, -kInset, 0),
                          Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
}

// The lines on show, from the first one scrolled to.
void drawMultiLineBox(const Page& page, const QPlainTextEdit& box)
{
    useStyleOf(page, box);
    const QRect rect = rectOf(page, box);
    page.painter.drawRect(rect);
    const QStringList lines = box.toPlainText().split('\n');
    const int lineHeight = QFontMetrics(page.painter.font()).lineSpacing();
    QRect line(rect.left() + kInset, rect.top() + kInset, rect.width() - 2 * kInset, lineHeight);
    for (qsizetype i = box.verticalScrollBar()->value(); i < lines.size(); ++i) {
        if (line.bottom() > rect.bottom() - kInset) break;
        page.painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, lines[i]);
        line.translate(0, lineHeight);
    }
}

// The square or circle of a check box or option button, the size of a
// capital letter, before the caption.
QRect markOf(const Page& page, const QRect& rect)
{
    const int size = QFontMetrics(page.painter.font()).height() * 3 / 4;
    return {rect.left() + 1, rect.center().y() - size / 2, size, size};
}

void drawCaptionAfter(const Page& page, const QRect& rect, const QRect& mark, const QString& caption)
{
    page.painter.drawText(QRect(mark.right() + 2 * kInset, rect.top(), rect.right() - mark.right(),
                                rect.height()),
                          Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          plainCaption(caption));
}

// A check box's square, ticked when checked, or an option button's circle,
// dotted when chosen; then the caption.
void drawToggle(const Page& page, const QAbstractButton& button, bool round)
{
    useStyleOf(page, button);
    const QRect rect = rectOf(page, button);
    const QRect mark = markOf(page, rect);
    if (round) {
        page.painter.drawEllipse(mark);
    } else {
        page.painter.drawRect(mark);
    }
    if (button.isChecked() && round) {
        page.painter.setBrush(page.painter.pen().color());
        page.painter.drawEllipse(QRectF(mark).adjusted(3, 3, -3, -3));
    } else if (button.isChecked()) {
        const QRectF tick = QRectF(mark).adjusted(2, 2, -2, -2);
        const QPointF bottom(tick.center().x() - 1, tick.bottom());
        page.painter.drawLine(QPointF(tick.left(), tick.center().y()), bottom);
        page.painter.drawLine(bottom, tick.topRight());
    }
    drawCaptionAfter(page, rect, mark, button.text());
}

void drawCommandButton(const Page& page, const QPushButton& button)
{
    useStyleOf(page, button);
    const QRect rect = rectOf(page, button);
    page.painter.drawRoundedRect(rect, kInset, kInset);
    page.painter.drawText(rect, Qt::AlignCenter | Qt::TextSingleLine, plainCaption(button.text()));
}

// The trough and the thumb where the value puts it.
void drawScrollBar(const Page& page, const QScrollBar& bar)
{
    useStyleOf(page, bar);
    const QRect rect = rectOf(page, bar);
    page.painter.drawRect(rect);
    const bool vertical = bar.orientation() == Qt::Vertical;
    const int length = vertical ? rect.height() : rect.width();
    const double span = static_cast<double>(bar.maximum()) - bar.minimum();
    const int thumb =
        std::max(8, static_cast<int>(length * bar.pageStep() / (span + bar.pageStep())));
    const int at = span > 0 ? static_cast<int>((bar.value() - bar.minimum()) / span * (length - thumb)) : 0;
    const QRect thumbRect = vertical ? QRect(rect.left(), rect.top() + at, rect.width(), thumb)
                                     : QRect(rect.left() + at, rect.top(), thumb, rect.height());
    page.painter.setBrush(kThumbFill);
    page.painter.drawRect(thumbRect);
}

void drawUpDown(const Page& page, const ui::UpDown& upDown)
{
    useStyleOf(page, upDown);
    const QRectF rect = rectOf(page, upDown);
    page.painter.drawRect(rect);
    const qreal middle = rect.center().y();
    page.painter.drawLine(QPointF(rect.left(), middle), QPointF(rect.right(), middle));
    const qreal half = std::min(rect.width(), rect.height() / 2) / 4;
    const qreal x = rect.center().x();
    page.painter.setBrush(page.painter.pen().color());
    const qreal upY = (rect.top() + middle) / 2;
    const qreal downY = (middle + rect.bottom()) / 2;
    page.painter.drawPolygon(QPolygonF({QPointF(x - half, upY + half / 2), QPointF(x + half, upY + half / 2),
                                        QPointF(x, upY - half / 2)}));
    page.painter.drawPolygon(QPolygonF({QPointF(x - half, downY - half / 2),
                                        QPointF(x + half, downY - half / 2), QPointF(x, downY + half / 2)}));
}

// The tabs with their captions (the one on show in bold, open towards its
// page) and only the page on show.
void drawTabs(const Page& page, const QTabWidget& tabs)
{
    const QTabBar& bar = *tabs.tabBar();
    const QPoint barAt = rectOf(page, bar).topLeft();
    for (int i = 0; i < tabs.count(); ++i) {
        const bool current = i == tabs.currentIndex();
        useStyleOf(page, tabs, current);
        const QRect tab = bar.tabRect(i).translated(barAt);
        page.painter.drawLine(tab.bottomLeft(), tab.topLeft());
        page.painter.drawLine(tab.topLeft(), tab.topRight());
        page.painter.drawLine(tab.topRight(), tab.bottomRight());
        if (!current) page.painter.drawLine(tab.bottomLeft(), tab.bottomRight());
        page.painter.drawText(tab, Qt::AlignCenter | Qt::TextSingleLine, plainCaption(tabs.tabText(i)));
    }
    const QWidget* shown = tabs.currentWidget();
    if (shown == nullptr) return;
    useStyleOf(page, tabs);
    page.painter.drawRect(rectOf(page, *shown->parentWidget()));
    drawChildren(page, *shown);
}

// The plot drawn anew in printer units, with vector lines.
void drawPlot(const Page& page, const QWidget& box)
{
    const QRect area = page.painter.transform().mapRect(rectOf(page, box));
    page.painter.save();
    page.painter.resetTransform();
    ui::PrinterSurface surface(page.painter, kLineWidth * page.scale);
    page.redrawPlot(surface, area);
    page.painter.restore();
}

void drawControl(const Page& page, const QWidget& widget)
{
    if (widget.inherits("QMenuBar")) return;
    if (dynamic_cast<const ui::PlotSurface*>(&widget) != nullptr) return drawPlot(page, widget);
    if (const auto* tabs = qobject_cast<const QTabWidget*>(&widget)) return drawTabs(page, *tabs);
    if (const auto* check = qobject_cast<const QCheckBox*>(&widget)) return drawToggle(page, *check, false);
    if (const auto* option = qobject_cast<const QRadioButton*>(&widget))
        return drawToggle(page, *option, true);
    if (const auto* button = qobject_cast<const QPushButton*>(&widget))
        return drawCommandButton(page, *button);
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) return drawLabel(page, *label);
    if (const auto* box = qobject_cast<const QLineEdit*>(&widget)) return drawTextBox(page, *box);
    if (const auto* lines = qobject_cast<const QPlainTextEdit*>(&widget))
        return drawMultiLineBox(page, *lines);
    if (const auto* bar = qobject_cast<const QScrollBar*>(&widget)) return drawScrollBar(page, *bar);
    if (const auto* upDown = qobject_cast<const ui::UpDown*>(&widget)) return drawUpDown(page, *upDown);
    if (const auto* frame = qobject_cast<const QFrame*>(&widget);
        frame != nullptr && frame->frameShape() != QFrame::NoFrame) {
        useStyleOf(page, widget);
        page.painter.drawRect(rectOf(page, widget));
    }
    drawChildren(page, widget);
}

// The form without its menu bar, in its own coordinates.
QRect printedPartOf(const QWidget& form)
{
    QRect part = form.rect();
    const auto* main = qobject_cast<const QMainWindow*>(&form);
    if (main != nullptr && main->menuWidget() != nullptr && main->menuWidget()->isVisibleTo(&form))
        part.setTop(main->menuWidget()->geometry().bottom() + 1);
    return part;
}

std::string printPage(QWidget& form, QPrinter& printer, const std::string& byline,
                      const PlotRedraw& redrawPlot)
{
    QPainter painter;
    if (!painter.begin(&printer))
        return "The printer could not be started. Check that it is installed and switched on, "
               "then print again.";
    const QRect paper = painter.viewport();
    const QRect part = printedPartOf(form);
    const int bylineHeight = printer.resolution() / 2;  // half an inch
    const qreal scale = std::min(static_cast<qreal>(paper.width()) / part.width(),
                                 static_cast<qreal>(paper.height() - bylineHeight) / part.height());
    painter.scale(scale, scale);
    const Page page{painter, form, part.topLeft(), scale, redrawPlot};
    page.painter.setPen(QPen(Qt::black, kLineWidth));
    painter.drawRect(QRect(QPoint(0, 0), part.size()));
    drawChildren(page, form);

    painter.resetTransform();
    QFont font = painter.font();
    font.setPointSize(kBylinePoints);
    painter.setFont(font);
    painter.setPen(Qt::black);
    const int top = static_cast<int>(part.height() * scale) + printer.resolution() / 8;
    painter.drawText(QRect(0, top, paper.width(), bylineHeight), Qt::AlignLeft | Qt::AlignTop,
                     QString::fromStdString(byline));
    if (!painter.end()) return "The page could not be finished. Print again.";
    return {};
}

// What a new file gets: read and write as the user's file mask allows.
QFile::Permissions newFilePermissions()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const mode_t mode = 0666 & ~mask;
    QFile::Permissions permissions;
    if (mode & S_IRUSR) permissions |= QFile::ReadOwner | QFile::ReadUser;
    if (mode & S_IWUSR) permissions |= QFile::WriteOwner | QFile::WriteUser;
    if (mode & S_IRGRP) permissions |= QFile::ReadGroup;
    if (mode & S_IWGRP) permissions |= QFile::WriteGroup;
    if (mode & S_IROTH) permissions |= QFile::ReadOther;
    if (mode & S_IWOTH) permissions |= QFile::WriteOther;
    return permissions;
}

std::string cannotWrite(const QString& file, const QString& why)
{
    return "Could not print to \"" + file.toStdString() + "\": " + why.toStdString() +
           ".\n\nChoose a folder you can write to and print again.";
}

}  // namespace

std::string gsPrintForm(QWidget& form, QPrinter& printer, const std::string& byline,
                        const PlotRedraw& redrawPlot)
{
    const QString target = printer.outputFileName();
    if (target.isEmpty()) return printPage(form, printer, byline, redrawPlot);

    const QFileInfo where(target);
    QTemporaryFile partial(where.absolutePath() + "/." + where.fileName() + ".XXXXXX");
    if (!partial.open()) return cannotWrite(target, partial.errorString());
    partial.setPermissions(newFilePermissions());
    partial.close();
    printer.setOutputFileName(partial.fileName());
    const std::string failure = printPage(form, printer, byline, redrawPlot);
    printer.setOutputFileName(target);
    if (!failure.empty()) return failure;

    std::error_code error;
    std::filesystem::rename(partial.fileName().toStdString(), where.absoluteFilePath().toStdString(),
                            error);
    if (error) return cannotWrite(target, QString::fromStdString(error.message()));
    partial.setAutoRemove(false);
    return {};
}
