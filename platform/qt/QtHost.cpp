#include "platform/qt/QtHost.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

namespace host {

namespace {

struct ButtonSet {
    QMessageBox::StandardButton buttons[3];
    int count;
    // The button that Esc and the frame's close button choose; NoButton when
    // the box insists on an answer.
    QMessageBox::StandardButton escape;
};

ButtonSet buttonSet(std::int32_t style)
{
    using B = QMessageBox;
    switch (style & 7) {
    case kOkCancel: return {{B::Ok, B::Cancel}, 2, B::Cancel};
    case kAbortRetryIgnore: return {{B::Abort, B::Retry, B::Ignore}, 3, B::NoButton};
    case kYesNoCancel: return {{B::Yes, B::No, B::Cancel}, 3, B::Cancel};
    case kYesNo: return {{B::Yes, B::No}, 2, B::NoButton};
    case kRetryCancel: return {{B::Retry, B::Cancel}, 2, B::Cancel};
    default: return {{B::Ok}, 1, B::Ok};
    }
}

QMessageBox::Icon iconFor(std::int32_t style)
{
    switch (style & 0x70) {
    case kCritical: return QMessageBox::Critical;
    case kQuestion: return QMessageBox::Question;
    case kExclamation: return QMessageBox::Warning;
    case kInformation: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

std::int16_t resultCode(QMessageBox::StandardButton button)
{
    switch (button) {
    case QMessageBox::Ok: return kResultOk;
    case QMessageBox::Cancel: return kResultCancel;
    case QMessageBox::Abort: return kResultAbort;
    case QMessageBox::Retry: return kResultRetry;
    case QMessageBox::Ignore: return kResultIgnore;
    case QMessageBox::Yes: return kResultYes;
    case QMessageBox::No: return kResultNo;
    default: return 0;
    }
}

QString displayText(const std::string& text)
{
    return QString::fromStdString(text).replace("\r\n", "\n").replace('\r', '\n');
}

}  // namespace

std::int16_t QtHost::msgBox(const std::string& text, std::int32_t style, const std::string& title)
{
    const ButtonSet set = buttonSet(style);
    QMessageBox box(iconFor(style), QString::fromStdString(title), displayText(text),
                    QMessageBox::NoButton, QApplication::activeWindow());
    for (int i = 0; i < set.count; ++i) box.addButton(set.buttons[i]);
    const int defaultIndex = std::min((style >> 8) & 3, set.count - 1);
    box.setDefaultButton(set.buttons[defaultIndex]);
    if (set.escape != QMessageBox::NoButton) box.setEscapeButton(set.escape);
    box.exec();
    QAbstractButton* clicked = box.clickedButton();
    const auto chosen = clicked != nullptr ? box.standardButton(clicked) : set.escape;
    const std::int16_t code = resultCode(chosen);
    return code != 0 ? code : defaultAnswer(style);
}

void QtHost::beep() { QApplication::beep(); }

void QtHost::sleep(std::uint32_t milliseconds)
{
    liveWait_.sleep(milliseconds, [this](std::uint32_t ms) { SystemHost::sleep(ms); });
}

std::int32_t QtHost::openAddress(const std::string& address)
{
    const QUrl url(QString::fromStdString(address));
    return QDesktopServices::openUrl(url) ? kOpenDone : kOpenNoAssociation;
}

}  // namespace host
