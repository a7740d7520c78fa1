// The engine through SDL's device path, with the "disk" driver (which writes
// what the callback produced to a file) and the "dummy" driver (no sound card).

#include "AudioEngine.h"
#include "WaveBuilder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <vector>

using namespace AudioEngine;

namespace {

QStringList g_errors;
void collectError(const char* text)
{
    g_errors << QString::fromLocal8Bit(text);
}

bool waitForStatus(PlayerHandle player, PlayerStatus status, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (GetStatus(player) != status) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QThread::msleep(2);
    }
    return true;
}

} // namespace

class TestEngineDevice : public QObject
{
    Q_OBJECT
    QTemporaryDir dir_;
    PlayerHandle player_ = nullptr;
    QByteArray wav_;

    void startEngine(const QByteArray& driver)
    {
        qputenv("SDL_AUDIODRIVER", driver);
        InitConfig config;
        config.outputRate = 48000;
        QVERIFY(Initialize(config));
        QVERIFY(IsDeviceRunning());
        QVERIFY(CreateWaveVoicePool({0, 1, 8, 192000}));
        player_ = CreatePlayer();
        QVERIFY(player_);
    }

    void play(const QByteArray& wav)
    {
        wav_ = wav;
        SetData(player_, wav_.constData(), static_cast<std::size_t>(wav_.size()));
        Start(player_);
    }

private slots:
    void init()
    {
        g_errors.clear();
        SetErrorCallback(collectError);
    }

    void cleanup()
    {
        Finalize();
        SetErrorCallback(nullptr);
        qunsetenv("SDL_AUDIODRIVER");
        qunsetenv("SDL_DISKAUDIOFILE");
    }

    void diskDriverWritesTheFileSamples()
    {
        const QString raw = dir_.filePath(QStringLiteral("out.raw"));
        qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(raw));
        startEngine("disk");
        const std::size_t frames = 9600; // 200 ms
        const auto values = fixtures::distinct16(frames * 2, 7);
        SetFadeIn(player_, false); // every sample as it is in the file
        play(fixtures::toQByteArray(fixtures::wavInts(2, 48000, 16, values)));
        QVERIFY(waitForStatus(player_, PlayerStatus::PlayEnd, 5000));
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(frames));
        Finalize();
        QFile f(raw);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        std::vector<float> out(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(out.data(), bytes.constData(), out.size() * sizeof(float));
        std::size_t first = 0;
        while (first < out.size() && out[first] == 0.0f)
            ++first;
        QVERIFY2(first % 2 == 0, "the sound must start on a frame boundary");
        QVERIFY(out.size() >= first + values.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            QCOMPARE(out[first + i], values[i] / 32768.0f);
        QVERIFY(std::all_of(out.begin() + static_cast<std::ptrdiff_t>(first + values.size()),
                            out.end(), [](float x) { return x == 0.0f; }));
    }

    void failedDeviceIsReportedAndFallsBackToDummy()
    {
        startEngine("no-such-driver");
        QCOMPARE(g_errors.size(), 1);
#ifdef _WIN32
        QVERIFY2(g_errors[0].startsWith(QStringLiteral("E2009042301 : ")), qPrintable(g_errors[0]));
#else
        QVERIFY2(g_errors[0].startsWith(QStringLiteral("E2026112201 : ")), qPrintable(g_errors[0]));
#endif
        play(fixtures::toQByteArray(fixtures::wavInts(1, 48000, 16, fixtures::distinct16(2400))));
        QVERIFY(waitForStatus(player_, PlayerStatus::PlayEnd, 3000));
    }
};

QTEST_GUILESS_MAIN(TestEngineDevice)
#include "tst_enginedevice.moc"
