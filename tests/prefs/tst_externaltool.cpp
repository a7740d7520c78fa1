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
    // The template splits at single spaces after the path is put in, with no
    // quoting; the rows marked `launch` also start a real program with it.
    void splitting_data()
    {
        QTest::addColumn<QString>("argumentTemplate");
        QTest::addColumn<QString>("filePath");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("launch");
        const auto row = [](const char* name, const char* argumentTemplate, const QString& path,
                            const QStringList& expected, bool launch = false) {
            QTest::newRow(name) << QString::fromUtf8(argumentTemplate) << path << expected
                                << launch;
        };
        row("placeholder twice", "-open %FILEPATH% %FILEPATH%", "/snd/a.wav",
            {"-open", "/snd/a.wav", "/snd/a.wav"}, true);
        row("non-ASCII path", "%FILEPATH%", QStringLiteral("/効果音/爆発.wav"),
            {QStringLiteral("/効果音/爆発.wav")}, true);
        row("path with a space splits", "%FILEPATH%", "C:/My Sounds/a.wav",
            {"C:/My", "Sounds/a.wav"});
        row("placeholder is case-sensitive", "%filepath% %FILEPATH%", "/a.wav",
            {"%filepath%", "/a.wav"});
        row("runs of spaces dropped", "  -x   %FILEPATH%  ", "/a.wav", {"-x", "/a.wav"});
        row("placeholder inside a word", "--file=%FILEPATH%", "/a.wav", {"--file=/a.wav"});
        row("quotes are not quoting", "\"%FILEPATH%\"", "/My Sounds/a.wav",
            {"\"/My", "Sounds/a.wav\""});
        row("tab is not a separator", "-a\t%FILEPATH%", "/a.wav", {"-a\t/a.wav"});
        row("empty template", "", "/a.wav", {});
    }

    void splitting()
    {
        QFETCH(QString, argumentTemplate);
        QFETCH(QString, filePath);
        QFETCH(QStringList, expected);
        QFETCH(bool, launch);
        QCOMPARE(ExternalToolArguments(argumentTemplate, filePath), expected);
        if (launch)
            QCOMPARE(launchAndRecord(argumentTemplate, filePath), expected);
    }

    void emptyOrMissingProgramDoesNothing()
    {
        QVERIFY(!LaunchExternalTool(QString(), "%FILEPATH%", "/a.wav"));
        QVERIFY(!LaunchExternalTool(dir.filePath("no-such-tool"), "%FILEPATH%", "/a.wav"));
    }
};

QTEST_GUILESS_MAIN(tst_ExternalTool)
#include "tst_externaltool.moc"
