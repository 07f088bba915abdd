// File > Export WAV: what the spectrum view analyses (one whole loop of the
// made signal at its own rate, or the last recording) written as a 16-bit
// mono WAV file.
#include "window/frmWavelark.h"

#include <optional>

#include <QFileDialog>
#include <QStandardPaths>

#include "analysis/modWavExport.h"
#include "base/Trap.h"
#include "platform/HostServices.h"
#include "window/frmWavelarkExportTesting.h"

namespace {

constexpr const char* kExportTitle = "Export WAV";

std::optional<std::string>& scriptedAnswer()
{
    static std::optional<std::string> answer;
    return answer;
}

// The file the user chose, "" when cancelled. A name without an extension
// gets ".wav".
std::string askExportPath(QWidget* parent)
{
    if (scriptedAnswer()) return *scriptedAnswer();
    QFileDialog dialog(parent, kExportTitle,
                       QStandardPaths::writableLocation(QStandardPaths::MusicLocation),
                       "WAV files (*.wav)");
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("wav");
    dialog.selectFile("wavelark.wav");
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return "";
    return dialog.selectedFiles().front().toStdString();
}

}  // namespace

void export_testing::answerSaveDialog(std::optional<std::string> sPath) { scriptedAnswer() = std::move(sPath); }

void frmWavelark::mnuFiExport_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuFiExport_Click", bError);
    std::string path;
    rt::SampleArray signal;
    std::int32_t rate = 0;
    trap.step([&] {
        path = askExportPath(this);
        if (path.empty()) trap.leave();
    });
    trap.step([&] { rate = mlAnalysedSignal(signal, 0); });
    trap.step([&] {
        // The writer says what failed and leaves no partial file behind.
        const std::string failure = gsWavExport(path, signal, rate, bError);
        if (!failure.empty()) host::msgBox(failure, host::kExclamation, kExportTitle);
    });
}
