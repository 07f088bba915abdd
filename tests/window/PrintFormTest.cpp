// Printing the window to PDF, read back as a reader of the page would: its
// text through pdftotext, its first page as an image through pdftoppm.
#include <gtest/gtest.h>

#include <unistd.h>

#include <QDate>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

#include "controls/TextBox.h"
#include "services/modGeneral.h"
#include "tests/window/LoadedWindow.h"

namespace {

// What a program prints to its standard output, or "" when it failed.
QString run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(30000) || process.exitCode() != 0) return {};
    return QString::fromUtf8(process.readAllStandardOutput());
}

class PrintedWindow : public LoadedWindow {
protected:
    PrintedWindow()
    {
        stored.insert(stored.end(), {{"txtFrequency1", "1234"},
                                     {"txtVOutMax", "2"},
                                     {"txtVOut2", "0.5"},
                                     {"txtVOutIdent", "Bench amp 7"}});
    }

    // Prints to a PDF file; the error flag PrintForm leaves.
    ErrorFlag printTo(const QString& file)
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(file);
        ErrorFlag error = kFalse;
        window.PrintForm(printer, error);
        return error;
    }

    static QString textOf(const QString& pdf) { return run("pdftotext", {"-layout", pdf, "-"}); }

    QImage firstPageOf(const QString& pdf)
    {
        const QString png = folder.filePath("page");
        run("pdftoppm", {"-r", "50", "-png", "-singlefile", "-f", "1", "-l", "1", pdf, png});
        return QImage(png + ".png");
    }

    QTemporaryDir folder;
};

TEST_F(PrintedWindow, ThePageHoldsTheFieldsTheTabsThePageOnShowAndTheByline)
{
    const QString pdf = folder.filePath("window.pdf");
    ASSERT_FALSE(printTo(pdf)) << boxTexts();
    const QString sweep = textOf(pdf);
    ASSERT_FALSE(sweep.isEmpty()) << "drawn as text, not as a picture of the screen";
    const QString frequency2 = window.txtFrequency2->text();
    for (const QString shown : {"Frequency 1 (Hz)", "1234", "Sine", "Mute", "2.00 (V)", "Sweep",
                                "Burst", "Info", "System", "Frequency 2 (Hz)", "Bi-directional"})
        EXPECT_TRUE(sweep.contains(shown)) << shown.toStdString() << " missing from:\n"
                                           << sweep.toStdString();
    EXPECT_TRUE(sweep.contains(QRegularExpression("Frequency 2 \\(Hz\\) +" + frequency2)));
    EXPECT_FALSE(sweep.contains("Bench amp 7")) << "only the page on show is printed";
    // The byline: program and version, the date, the output device.
    const QString byline = QString::fromStdString(gsProgNameVersion) + " +Printed " +
                           QDate::currentDate().toString(Qt::ISODate) + " [0-9:]+ +Output: " +
                           QString::fromStdString(gWaveOutInfo().name);
    EXPECT_TRUE(sweep.contains(QRegularExpression(byline))) << sweep.toStdString();

    // Printed again over the same file, with the System page on show.
    window.tabTab->setCurrentIndex(3);
    settle();
    ASSERT_FALSE(printTo(pdf)) << boxTexts();
    const QString system = textOf(pdf);
    for (const char* shown : {"Bench amp 7", "Out Max (V)", "0.5", "Calibrate"})
        EXPECT_TRUE(system.contains(shown)) << shown << " missing from:\n" << system.toStdString();
    EXPECT_FALSE(system.contains("Frequency 2 (Hz)"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{"window.pdf"})
        << "no temporary file is left beside it";
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(PrintedWindow, ThePlotIsDrawnAnewOnThePageBesideTheControls)
{
    const QString pdf = folder.filePath("window.pdf");
    ASSERT_FALSE(printTo(pdf)) << boxTexts();
    const QImage page = firstPageOf(pdf);
    ASSERT_FALSE(page.isNull());
    // Muted, the made signal is drawn in red: the only red on the page.
    QRect trace;
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x) {
            const QColor c = page.pixelColor(x, y);
            if (c.red() > 180 && c.green() < 120 && c.blue() < 120) trace |= QRect(x, y, 1, 1);
        }
    ASSERT_FALSE(trace.isEmpty()) << "no plot on the page";
    // The picture box lies right of the signal and level panels, in the
    // window's upper half, and the trace runs across it.
    EXPECT_GT(trace.left(), page.width() / 3);
    EXPECT_GT(trace.width(), page.width() / 5);
    EXPECT_LT(trace.bottom(), page.height() / 2);
    EXPECT_GT(trace.height(), 5) << "a cycle of the sine, not a flat line";
}

TEST_F(PrintedWindow, AFolderThatCannotBeWrittenGivesAClearMessageAndNoFile)
{
    // Root writes into any folder a mode forbids; no one creates files in /proc.
    QString readOnly = "/proc/self";
    if (::geteuid() != 0) {
        readOnly = folder.filePath("locked");
        ASSERT_TRUE(QDir().mkdir(readOnly));
        QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ExeOwner);
    }
    const QString pdf = readOnly + "/window.pdf";

    EXPECT_TRUE(printTo(pdf));

    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_NE(host.boxes[0].text.find("Could not print to \"" + pdf.toStdString() + "\""),
              std::string::npos)
        << host.boxes[0].text;
    EXPECT_NE(host.boxes[0].text.find("Choose a folder you can write to"), std::string::npos);
    EXPECT_FALSE(QFile::exists(pdf));
    if (::geteuid() != 0) {
        EXPECT_TRUE(QDir(readOnly).entryList(QDir::Files | QDir::Hidden).isEmpty());
    }
}

// Ctrl+P through the print dialog, answered when it shows: its output file
// box (the one holding a path) is pointed at the test's folder, then the
// dialog is accepted or cancelled.
TEST_F(PrintedWindow, CtrlPPrintsWhatTheDialogChoosesAndACancelPrintsNothing)
{
    const QString pdf = folder.filePath("chosen.pdf");
    std::vector<QString> shown;  // the output file each dialog offered
    const auto answerDialog = [&](bool accept) {
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        QTimer::singleShot(0, &window, [&, accept] {
            auto* dialog = qobject_cast<QPrintDialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr) return;
            for (auto* box : dialog->findChildren<QLineEdit*>()) {
                if (!box->text().startsWith('/')) continue;  // the output file's path
                shown.push_back(box->text());
                box->setText(pdf);
            }
            if (accept) {
                dialog->accept();
            } else {
                dialog->reject();
            }
        });
        QTest::keyClick(&window, Qt::Key_P, Qt::ControlModifier);
        settle();
    };

    answerDialog(false);
    ASSERT_EQ(shown.size(), 1u) << "Ctrl+P opens the print dialog, printing to a file";
    EXPECT_FALSE(QFile::exists(pdf));
    answerDialog(true);
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_TRUE(textOf(pdf).contains("Frequency 1 (Hz)"));
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

}  // namespace
