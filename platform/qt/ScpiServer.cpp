#include "platform/qt/ScpiServer.h"

#include <QApplication>
#include <QTcpSocket>

#include "platform/qt/LiveWait.h"

namespace host {

namespace {

// How much is read from the client at a time.
constexpr qint64 kReadChunk = 16384;
// How often waiting lines look whether they may run.
constexpr int kRetryMs = 50;

}  // namespace

ScpiServer::ScpiServer()
{
    for (QTcpServer* server : {&v4_, &v6_}) {
        server->setMaxPendingConnections(1);
        connect(server, &QTcpServer::newConnection, this, &ScpiServer::takeClient);
    }
    retry_.setSingleShot(true);
    retry_.setInterval(kRetryMs);
    connect(&retry_, &QTimer::timeout, this, &ScpiServer::serve);
}

ScpiServer::~ScpiServer() { close(); }

bool ScpiServer::listen(std::uint16_t port, QString& error)
{
    close();
    if (!v4_.listen(QHostAddress::LocalHost, port)) {
        error = v4_.errorString();
        return false;
    }
    // A system without IPv6 still serves 127.0.0.1; a ::1 held by another
    // program is a port in use like any other.
    if (!v6_.listen(QHostAddress::LocalHostIPv6, v4_.serverPort()) &&
        v6_.serverError() != QAbstractSocket::UnsupportedSocketOperationError) {
        error = v6_.errorString();
        v4_.close();
        return false;
    }
    return true;
}

void ScpiServer::close()
{
    v4_.close();
    v6_.close();
    dropClient();
}

std::vector<QHostAddress> ScpiServer::addresses() const
{
    std::vector<QHostAddress> listening;
    for (const QTcpServer* server : {&v4_, &v6_})
        if (server->isListening()) listening.push_back(server->serverAddress());
    return listening;
}

void ScpiServer::takeClient()
{
    if (client_) return;
    for (QTcpServer* server : {&v4_, &v6_}) {
        if (!server->hasPendingConnections()) continue;
        client_ = server->nextPendingConnection();
        break;
    }
    if (!client_) return;
    // Qt reads no further than this ahead of us: a client that sends faster
    // than its lines run is held back by the connection itself.
    client_->setReadBufferSize(kReadChunk);
    connect(client_, &QTcpSocket::readyRead, this, &ScpiServer::serve);
    connect(client_, &QTcpSocket::disconnected, this, &ScpiServer::dropClient);
    // Whoever connects next waits in the system's queue until this client
    // has gone.
    v4_.pauseAccepting();
    v6_.pauseAccepting();
    if (clientsChanged) clientsChanged();
    serve();
}

void ScpiServer::dropClient()
{
    buffered_.clear();
    discarding_ = false;
    if (client_) {
        QTcpSocket* leaving = client_;
        client_ = nullptr;
        leaving->disconnect(this);
        leaving->abort();
        leaving->deleteLater();
        if (clientsChanged) clientsChanged();
    }
    if (v4_.isListening()) {
        v4_.resumeAccepting();
        v6_.resumeAccepting();
        // A client that connected meanwhile is taken now.
        QTimer::singleShot(0, this, &ScpiServer::takeClient);
    }
}

bool ScpiServer::mustWait() const
{
    return running_ || waitUnderway() || QApplication::activeModalWidget() != nullptr ||
           QApplication::activePopupWidget() != nullptr;
}

void ScpiServer::serve()
{
    if (!client_) return;
    if (mustWait()) {
        retry_.start();
        return;
    }
    while (client_) {
        const qsizetype newline = buffered_.indexOf('\n');
        if (newline < 0) {
            if (discarding_) {
                buffered_.clear();
            } else if (buffered_.size() > kMaxLine) {
                buffered_.clear();
                discarding_ = true;
                if (lineRefused) lineRefused();
            }
            if (client_->bytesAvailable() == 0) return;
            buffered_ += client_->read(kReadChunk);
            continue;
        }
        QByteArray line = buffered_.left(newline);
        buffered_.remove(0, newline + 1);
        if (discarding_) {
            discarding_ = false;
            continue;
        }
        if (line.size() > kMaxLine) {
            if (lineRefused) lineRefused();
            continue;
        }
        run(line);
        // The user's own events come between two lines.
        QTimer::singleShot(0, this, &ScpiServer::serve);
        return;
    }
}

void ScpiServer::run(const QByteArray& line)
{
    QByteArray text = line;
    if (text.endsWith('\r')) text.chop(1);
    running_ = true;
    const std::string reply = lineReceived ? lineReceived(text.toStdString()) : std::string();
    running_ = false;
    // The client may have gone while the line ran.
    if (!client_ || reply.empty()) return;
    client_->write(QByteArray::fromStdString(reply + "\n"));
    if (client_->bytesToWrite() > kMaxUnread) dropClient();
}

}  // namespace host
