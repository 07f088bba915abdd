#include "platform/qt/InstanceMarker.h"

#include <pwd.h>
#include <unistd.h>

#include <QApplication>
#include <QLocalSocket>
#include <QLockFile>
#include <QMainWindow>
#include <QStandardPaths>

namespace host {

namespace {

constexpr int kAnswerWaitMs = 2000;
constexpr int kClaimWaitMs = 5000;
const QByteArray kComeForward = "come-forward\n";

QString userName()
{
    if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_name != nullptr)
        return QString::fromLocal8Bit(entry->pw_name);
    return QString::number(::getuid());
}

// In the user's runtime folder (private to the user) when there is one;
// otherwise a bare name, which the socket layer puts in the shared
// temporary folder, limited to the user by the socket's permissions.
QString defaultMarkerPath()
{
    const QString name = QCoreApplication::applicationName() + "-" + userName() + ".instance";
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? name : folder + "/" + name;
}

}  // namespace

InstanceMarker::InstanceMarker() : InstanceMarker(defaultMarkerPath()) {}

InstanceMarker::InstanceMarker(QString path) : path_(std::move(path))
{
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { answer(socket); });
            answer(socket);  // the request may have come with the connection
        }
    });
}

bool InstanceMarker::claim()
{
    if (!held_) held_ = claimNow();
    return *held_;
}

bool InstanceMarker::claimNow()
{
    // The lock makes the look and the take-over one step for copies that
    // start together; a lock left by a crashed copy is stale and broken.
    QLockFile lock(path_ + ".lock");
    lock.tryLock(kClaimWaitMs);
    if (holderAnswers()) return false;
    QLocalServer::removeServer(path_);  // a marker left behind by a copy that crashed
    // A marker that cannot be made leaves this copy running without one,
    // rather than refusing to start.
    server_.listen(path_);
    return true;
}

bool InstanceMarker::holderAnswers()
{
    QLocalSocket probe;
    probe.connectToServer(path_);
    const bool answered = probe.waitForConnected(kAnswerWaitMs);
    probe.abort();
    return answered;
}

bool InstanceMarker::askHolderForward()
{
    QLocalSocket socket;
    socket.connectToServer(path_);
    if (!socket.waitForConnected(kAnswerWaitMs)) return false;
    socket.write(kComeForward);
    // What the socket could not hand over at once is waited for.
    if (socket.bytesToWrite() > 0) socket.waitForBytesWritten(kAnswerWaitMs);
    const bool sent = socket.bytesToWrite() == 0;
    socket.disconnectFromServer();
    return sent;
}

void InstanceMarker::answer(QLocalSocket* socket)
{
    while (socket->canReadLine()) {
        if (socket->readLine() == kComeForward) bringWindowsForward();
    }
}

void bringWindowsForward()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMainWindow*>(widget) == nullptr || !widget->isVisible()) continue;
        if (widget->isMinimized()) widget->showNormal();
        widget->raise();
        widget->activateWindow();
    }
}

}  // namespace host
