#include "FlacEncoding.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cstdio>

namespace fixtures {

bool encodeFlac(const QString& wav, const QString& flac, const QStringList& options, bool toPipe)
{
    QProcess process;
    QStringList arguments{QStringLiteral("--silent"), QStringLiteral("--force")};
    arguments += options;
    if (toPipe) {
        arguments += QStringLiteral("--stdout");
        process.setStandardOutputFile(flac);
    } else {
        arguments += {QStringLiteral("-o"), flac};
    }
    arguments += wav;
    process.start(QStringLiteral("flac"), arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        std::fprintf(stderr, "flac %s: %s\n", qPrintable(arguments.join(QLatin1Char(' '))),
                     process.readAllStandardError().constData());
        return false;
    }
    return true;
}

Bytes flacFromWav(const Bytes& wav, const QString& workFolder, const QStringList& options,
                  bool toPipe)
{
    const QString in = QDir(workFolder).filePath(QStringLiteral("flac-input.wav"));
    const QString out = QDir(workFolder).filePath(QStringLiteral("flac-output.flac"));
    if (!writeFile(in, wav) || !encodeFlac(in, out, options, toPipe))
        return {};
    QFile file(out);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray all = file.readAll();
    return Bytes(all.begin(), all.end());
}

std::size_t flacFramesStart(const Bytes& flac)
{
    std::size_t pos = 4;
    while (pos + 4 <= flac.size()) {
        const bool last = flac[pos] & 0x80;
        pos += 4 + ((std::size_t(flac[pos + 1]) << 16) | (std::size_t(flac[pos + 2]) << 8) |
                    flac[pos + 3]);
        if (last)
            return pos <= flac.size() ? pos : 0;
    }
    return 0;
}

} // namespace fixtures
