#include "FileManagerReveal.h"

#include <QDBusConnection>
#include <QDesktopServices>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

// Stands in for the desktop's file manager on the test's private session bus.
class FakeFileManager final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;
    QString startupId;

public slots:
    void ShowItems(const QStringList& uris, const QString& startup)
    {
        shown = uris;
        startupId = startup;
        emit called();
    }

signals:
    void called();
};

// Records what would be handed to the desktop's default handler.
class UrlRecorder final : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened << url; }
};

class TestFileManagerReveal : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    UrlRecorder recorder;

private slots:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &recorder, "open");
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    void noFileManagerOpensTheFolder()
    {
        RevealInFileManager(dir.filePath(QStringLiteral("door slam.wav")), this);
        QTRY_COMPARE_WITH_TIMEOUT(recorder.opened.size(), 1, 10000);
        QCOMPARE(recorder.opened.first(), QUrl::fromLocalFile(dir.path()));
    }

    void fileManagerShowsTheFileSelected_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("blank") << QStringLiteral("door slam.wav")
                               << QStringLiteral("door%20slam.wav");
        QTest::newRow("hash and percent") << QStringLiteral("take #2 at 100%.wav")
                                          << QStringLiteral("take%20%232%20at%20100%25.wav");
        QTest::newRow("Japanese") << QStringLiteral("\u30c9\u30a2.wav")
                                  << QStringLiteral("%E3%83%89%E3%82%A2.wav");
    }

    void fileManagerShowsTheFileSelected()
    {
        QFETCH(QString, name);
        QFETCH(QString, encoded);
        QDBusConnection bus = QDBusConnection::sessionBus();
        FakeFileManager fake;
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &fake,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
        QSignalSpy called(&fake, &FakeFileManager::called);

        recorder.opened.clear();
        const QString file = dir.filePath(name);
        RevealInFileManager(file, this);
        QTRY_COMPARE_WITH_TIMEOUT(called.count(), 1, 10000);
        // Percent-encoded as the interface wants, and back to the very file.
        const QString folder = QUrl::fromLocalFile(dir.path()).toString(QUrl::FullyEncoded);
        QCOMPARE(fake.shown, QStringList{folder + QLatin1Char('/') + encoded});
        QCOMPARE(QUrl(fake.shown.first(), QUrl::StrictMode).toLocalFile(), file);
        QVERIFY(fake.startupId.isEmpty());
        // Answered: no folder is opened besides.
        QTest::qWait(100);
        QVERIFY(recorder.opened.isEmpty());

        bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
        bus.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
    }
};

QTEST_MAIN(TestFileManagerReveal)
#include "tst_filemanagerreveal.moc"
