#include "app/Display.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <QApplication>

namespace app {

namespace {

struct HeldMessage {
    QtMsgType type;
    std::string category;
    QString text;
};

std::vector<HeldMessage> gHeldMessages;

// "NAME=value", or "NAME is not set".
std::string describeVariable(const char* name)
{
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::string(name) + " is not set";
    return std::string(name) + "=" + value;
}

[[noreturn]] void exitWithoutDisplay()
{
    std::string tried = describeVariable("DISPLAY") + ", " + describeVariable("WAYLAND_DISPLAY");
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform != nullptr && *platform != '\0') tried += ", QT_QPA_PLATFORM=" + std::string(platform);
    std::fprintf(stderr,
                 "wavelark: there is no display to show the window on (%s); run it from a desktop "
                 "session, or without a screen as 'xvfb-run -a wavelark' (Debian package xvfb).\n",
                 tried.c_str());
    // The toolkit is half started and cannot be wound down; end here, as it would.
    std::_Exit(1);
}

// The toolkit's only fatal message while it starts is that no platform (no
// display) could be opened.
void holdStartMessages(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) exitWithoutDisplay();
    gHeldMessages.push_back({type, context.category != nullptr ? context.category : "", text});
}

void releaseHeldMessages()
{
    for (const HeldMessage& message : gHeldMessages) {
        const QMessageLogContext context(nullptr, 0, nullptr, message.category.c_str());
        qt_message_output(message.type, context, message.text);
    }
    gHeldMessages.clear();
}

}  // namespace

std::unique_ptr<QApplication> openDisplayOrExit(int& argc, char* argv[])
{
    const QtMessageHandler previous = qInstallMessageHandler(holdStartMessages);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(previous);
    releaseHeldMessages();
    return application;
}

}  // namespace app
