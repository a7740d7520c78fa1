#pragma once
// tesk-scan run as separate processes, as the tools tests drive it.

#include <QProcess>

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
    std::vector<ScanRun> runs(std::size_t(scans.size()));
    for (const QStringList& arguments : scans) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setProcessEnvironment(env);
        processes.back()->start(QStringLiteral(TESK_SCAN_PATH), arguments);
    }
    for (std::size_t i = 0; i < processes.size(); ++i) {
        QProcess& p = *processes[i];
        if (p.waitForFinished(240000) && p.exitStatus() == QProcess::NormalExit)
            runs[i] = {p.exitCode(), p.readAllStandardOutput(), p.readAllStandardError()};
    }
    return runs;
}

inline ScanRun RunScan(const QStringList& arguments,
                       const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    return RunScansAtOnce({arguments}, env).front();
}
