#pragma once
// tesk-scan run as separate processes, as the tools tests drive it.

#include <QProcess>
#include <QProcessEnvironment>

#include <memory>
#include <vector>

struct ScanRun
{
    int exitCode = -1; // -1: crashed or did not end in time
    QByteArray out;
    QByteArray err;
    // "0 " for a run that ended well and said nothing on stderr.
    QByteArray status() const { return QByteArray::number(exitCode) + ' ' + err; }
};

// All at the same time, each with its own arguments.
inline std::vector<ScanRun>
RunScansAtOnce(const QList<QStringList>& scans,
               const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QStringList& arguments : scans) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setProcessEnvironment(env);
        processes.back()->start(QStringLiteral(TESK_SCAN_PATH), arguments);
    }
    std::vector<ScanRun> runs(processes.size());
    for (std::size_t i = 0; i < processes.size(); ++i) {
        QProcess& process = *processes[i];
        if (!process.waitForFinished(240000))
            process.kill();
        else if (process.exitStatus() == QProcess::NormalExit)
            runs[i] = {process.exitCode(), process.readAllStandardOutput(),
                       process.readAllStandardError()};
    }
    return runs;
}

inline ScanRun RunScan(const QStringList& arguments,
                       const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    return RunScansAtOnce({arguments}, env).front();
}
