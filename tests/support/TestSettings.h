#pragma once

#include <QSignalSpy>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace fixtures {

// Points the user-scope INI settings and the cache folder (where the analysis
// library lives) at a private folder for the test's life, so no test reads or
// writes the developer's own settings or library.
class TestSettings final
{
public:
    TestSettings();
    bool isValid() const { return m_dir.isValid(); }
    QString path() const { return m_dir.path(); }
    // The file the program's own settings land in.
    QString iniPath() const;
    void clear() const;
    // Replaces the program's file by `bytes`, as a hand edit would. Each call
    // gives the file a new modification time, so that QSettings, which keeps
    // files it has read and reloads them only when their size or time
    // changed, reads it again.
    bool writeIni(const QByteArray& bytes) const;

private:
    QTemporaryDir m_dir;
};

// The first argument of every signal a spy caught, as text.
QStringList SpiedTexts(const QSignalSpy& spy);

// Writes `bytes` (possibly none) to `path`, creating its folder.
bool WriteBytes(const QString& path, const QByteArray& bytes = {});

} // namespace fixtures
