#pragma once
// Runs a program to its end, as a user's shell would, and keeps what it said.
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace testing_support {

struct ProcessRun {
    bool finished = false;  // ended by itself, neither crashed nor timed out
    int status = -1;
    QString out;
    QString err;
};

inline ProcessRun runProcess(const QString& program, const QStringList& arguments,
                             const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                             int timeoutMs = 60000)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ProcessRun run;
    run.finished = process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit;
    if (!run.finished) process.kill();
    process.waitForFinished();
    run.status = process.exitCode();
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

}  // namespace testing_support
