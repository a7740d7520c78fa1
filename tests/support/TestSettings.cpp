#include "TestSettings.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace fixtures {

TestSettings::TestSettings()
{
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
    // The persistent analysis library lives in the cache folder.
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_dir.filePath(QStringLiteral("cache"))));
}

QString TestSettings::iniPath() const
{
    return m_dir.filePath(QStringLiteral("Orvane Works/Tesk.ini"));
}

void TestSettings::clear() const
{
    QFile::remove(iniPath());
}

bool TestSettings::writeIni(const QByteArray& bytes) const
{
    static qint64 edits = 0;
    if (!WriteBytes(iniPath(), bytes))
        return false;
    QFile f(iniPath());
    return f.open(QIODevice::ReadWrite) &&
           f.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000 + ++edits),
                         QFileDevice::FileModificationTime);
}

QStringList SpiedTexts(const QSignalSpy& spy)
{
    QStringList texts;
    for (const QList<QVariant>& args : spy)
        texts << args.value(0).toString();
    return texts;
}

bool WriteBytes(const QString& path, const QByteArray& bytes)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace fixtures
