#pragma once
// The remote-control server: a TCP server on the loopback interface only
// (127.0.0.1 and ::1, never every address) that reads newline-terminated
// lines from one client at a time and answers each with the reply its
// handler gives.
//
// - One client is served at a time; a second one that connects meanwhile
//   waits (its connection is not taken) until the first has gone.
// - Lines run on the event loop, one at a time and never inside another
//   one or inside something the user started: while a line runs, while the
//   engine waits for the sound card, or while a dialog or menu of the
//   window is open, further lines wait. Between two lines the window
//   handles what the user did.
// - A line longer than kMaxLine bytes is refused (lineRefused) and the rest
//   of it, up to its newline, is read and thrown away without being kept:
//   a megabyte without a newline costs no more memory than a short line.
// - A client that sends nothing holds nothing but its connection; one that
//   goes while its line runs loses only the reply. One that leaves more
//   than kMaxUnread bytes of replies unread is disconnected.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace host {

class ScpiServer : public QObject {
public:
    static constexpr std::uint16_t kDefaultPort = 5025;
    static constexpr qsizetype kMaxLine = 4096;
    static constexpr qint64 kMaxUnread = 1 << 20;

    ScpiServer();
    ~ScpiServer() override;

    // Runs one line (without its newline or carriage return) and gives the
    // reply, empty for none.
    std::function<std::string(const std::string& line)> lineReceived;
    // A line was longer than kMaxLine.
    std::function<void()> lineRefused;
    // A client came or went.
    std::function<void()> clientsChanged;

    // Listens on both loopback addresses at port (0: a free port chosen by
    // the system). False, with the reason in error, when the port cannot be
    // had; nothing listens then.
    bool listen(std::uint16_t port, QString& error);
    // Stops listening and lets the client go.
    void close();
    bool isListening() const { return v4_.isListening(); }
    std::uint16_t port() const { return v4_.serverPort(); }
    int clientCount() const { return client_ ? 1 : 0; }
    // The addresses listened on.
    std::vector<QHostAddress> addresses() const;

private:
    void takeClient();
    void dropClient();
    void serve();
    bool mustWait() const;
    void run(const QByteArray& line);

    QTcpServer v4_;
    QTcpServer v6_;
    QPointer<QTcpSocket> client_;
    // Bytes read from the client and not yet used: at most one line and one
    // read.
    QByteArray buffered_;
    // True while the rest of a refused line is thrown away.
    bool discarding_ = false;
    bool running_ = false;
    // Tries again while lines have to wait.
    QTimer retry_;
};

}  // namespace host
