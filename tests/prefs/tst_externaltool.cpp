#include "ExternalToolLauncher.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_ExternalTool final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    // Launches the recorder through the real rule and reads back what it got.
    QStringList launchAndRecord(const QString& argumentTemplate, const QString& filePath)
    {
        static int n = 0;
        const QString out = dir.filePath(QStringLiteral("args%1.txt").arg(++n));
        qputenv("TESK_ARGRECORDER_OUT", QFile::encodeName(out));
        if (!LaunchExternalTool(QStringLiteral(TESK_ARGRECORDER), argumentTemplate, filePath))
            return {QStringLiteral("<not started>")};
        QFile f(out);
        for (int waited = 0; !f.exists() && waited < 10000; waited += 20)
            QTest::qWait(20);
        if (!f.open(QIODevice::ReadOnly))
            return {QStringLiteral("<no record>")};
        QStringList args = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
        args.removeLast(); // after the final newline
        return args;
    }

private slots:
    void splitting_data()
    {
        QTest::addColumn<QString>("argumentTemplate");
        QTest::addColumn<QString>("filePath");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("placeholder twice")
            << "-open %FILEPATH% %FILEPATH%"
            << "/snd/a.wav" << QStringList{"-open", "/snd/a.wav", "/snd/a.wav"};
        QTest::newRow("path with a space splits")
            << "%FILEPATH%"
            << "C:/My Sounds/a.wav" << QStringList{"C:/My", "Sounds/a.wav"};
        QTest::newRow("placeholder is case-sensitive")
            << "%filepath% %FILEPATH%"
            << "/a.wav" << QStringList{"%filepath%", "/a.wav"};
        QTest::newRow("runs of spaces dropped") << "  -x   %FILEPATH%  "
                                                << "/a.wav" << QStringList{"-x", "/a.wav"};
        QTest::newRow("placeholder inside a word") << "--file=%FILEPATH%"
                                                   << "/a.wav" << QStringList{"--file=/a.wav"};
        QTest::newRow("quotes are not quoting")
            << "\"%FILEPATH%\""
            << "/My Sounds/a.wav" << QStringList{"\"/My", "Sounds/a.wav\""};
        QTest::newRow("tab is not a separator") << "-a\t%FILEPATH%"
                                                << "/a.wav" << QStringList{"-a\t/a.wav"};
        QTest::newRow("no placeholder") << "-v"
                                        << "/a.wav" << QStringList{"-v"};
        QTest::newRow("empty template") << ""
                                        << "/a.wav" << QStringList{};
    }

    void splitting()
    {
        QFETCH(QString, argumentTemplate);
        QFETCH(QString, filePath);
        QFETCH(QStringList, expected);
        QCOMPARE(ExternalToolArguments(argumentTemplate, filePath), expected);
    }

    void toolReceivesTheArguments_data()
    {
        QTest::addColumn<QString>("argumentTemplate");
        QTest::addColumn<QString>("filePath");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("three arguments")
            << "-open %FILEPATH% %FILEPATH%"
            << "/snd/a.wav" << QStringList{"-open", "/snd/a.wav", "/snd/a.wav"};
        QTest::newRow("non-ASCII path") << "%FILEPATH%" << QStringLiteral("/効果音/爆発.wav")
                                        << QStringList{QStringLiteral("/効果音/爆発.wav")};
    }

    void toolReceivesTheArguments()
    {
        QFETCH(QString, argumentTemplate);
        QFETCH(QString, filePath);
        QFETCH(QStringList, expected);
        QCOMPARE(launchAndRecord(argumentTemplate, filePath), expected);
    }

    void emptyOrMissingProgramDoesNothing()
    {
        for (const QString& program : {QString(), dir.filePath(QStringLiteral("no-such-tool"))})
            QVERIFY(!LaunchExternalTool(program, QStringLiteral("%FILEPATH%"),
                                        QStringLiteral("/a.wav")));
    }
};

QTEST_GUILESS_MAIN(tst_ExternalTool)
#include "tst_externaltool.moc"
