#pragma once

#include <QLibrary>
#include <QStringList>

// Control functions of the stand-in SDK, resolved from the same library file
// the code under test loads, so both see one server.
struct FakeSdkControl
{
    void (*reset)() = nullptr;
    void (*setResult)(const char* function, int code) = nullptr;
    void (*setExportedAsset)(const char* path) = nullptr;
    // What gacGetExportedAssets claims when asked for the count and when
    // writing; INT_MIN for the true one.
    void (*setExportedCounts)(int reported, int written) = nullptr;
    int (*calls)(char* buffer, int size) = nullptr;
    // Fires the callback of kind from an SDK thread with lists claiming count records.
    void (*fireCount)(int kind, int count) = nullptr;
    // The next call to function fires the callback of kind before it returns.
    void (*fireDuring)(const char* function, int kind) = nullptr;
    // Calls to function wait while on is non-zero; held() counts them.
    void (*hold)(const char* function, int on) = nullptr;
    int (*held)(const char* function) = nullptr;
    int (*holdsGivenUp)() = nullptr;
    // Asks the client to translate a path as the server would.
    int (*translate)(const char* path, char* out, int size) = nullptr;

    bool resolve(const QString& path)
    {
        QLibrary lib(path);
        bool all = true;
        const auto one = [&](auto& f, const char* name) {
            f = reinterpret_cast<std::remove_reference_t<decltype(f)>>(lib.resolve(name));
            all = all && f;
        };
        one(reset, "fakeGacReset");
        one(setResult, "fakeGacSetResult");
        one(setExportedAsset, "fakeGacSetExportedAsset");
        one(setExportedCounts, "fakeGacSetExportedCounts");
        one(calls, "fakeGacCalls");
        one(fireCount, "fakeGacFireCount");
        one(fireDuring, "fakeGacFireDuring");
        one(hold, "fakeGacHold");
        one(held, "fakeGacHeld");
        one(holdsGivenUp, "fakeGacHoldsGivenUp");
        one(translate, "fakeGacTranslate");
        return all;
    }

    void fire(int kind) const { fireCount(kind, 2); }

    QStringList callList() const
    {
        QByteArray buffer(calls(nullptr, 0), '\0');
        calls(buffer.data(), buffer.size());
        return QString::fromUtf8(buffer.constData()).split('\n', Qt::SkipEmptyParts);
    }
};
