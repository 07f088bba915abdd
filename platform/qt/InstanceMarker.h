#pragma once
// The per-user instance marker: a local socket named from the program's
// title and the user, in the user's runtime folder and reachable by that
// user only. The first copy listens on it; a later copy finds it, asks the
// first to bring its window forward, and ends. A marker left behind by a
// copy that crashed answers nobody: it is removed and taken over.
#include <optional>

#include <QLocalServer>
#include <QString>

class QLocalSocket;

namespace host {

class InstanceMarker : public QObject {
public:
    // The marker of this program (its application name) for this user.
    InstanceMarker();
    // A marker at the path given (tests).
    explicit InstanceMarker(QString path);

    // Claims the marker once; later calls repeat the first answer. True when
    // this copy holds it, false when an earlier copy does. Copies that start
    // at the same moment claim one after the other, so exactly one wins.
    bool claim();
    // Asks the copy holding the marker to bring its window forward; false
    // when no copy answers.
    bool askHolderForward();

    const QString& path() const { return path_; }

private:
    bool claimNow();
    bool holderAnswers();
    void answer(QLocalSocket* socket);

    QString path_;
    QLocalServer server_;
    std::optional<bool> held_;
};

// Restores the program's main windows from minimised, raises and activates
// them.
void bringWindowsForward();

}  // namespace host
