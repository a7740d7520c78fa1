#pragma once
// tesk-scan run as a separate process, as the tools tests drive it.

#include <QProcess>
#include <QProcessEnvironment>

struct ScanRun
{
    int exitCode = -1; // -1: crashed or did not end in time
    QByteArray out;
    QByteArray err;
};

inline ScanRun RunScan(const QStringList& arguments,
                       const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(TESK_SCAN_PATH), arguments);
    ScanRun run;
    if (!process.waitForFinished(240000)) {
        process.kill();
        process.waitForFinished();
    } else if (process.exitStatus() == QProcess::NormalExit) {
        run = {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
    return run;
}
