#pragma once

#include <QLibrary>
#include <QStringList>

// Control functions of the stand-in SDK, resolved from the same library file
// the code under test loads, so both see one server.
struct FakeSdkControl
{
    void (*reset)() = nullptr;
    void (*setResult)(const char*, int) = nullptr;
    void (*setExportedAsset)(const char*) = nullptr;
    void (*setExportedCounts)(int, int) = nullptr;
    int (*calls)(char*, int) = nullptr;
    void (*fireCount)(int, int) = nullptr;
    void (*fireDuring)(const char*, int) = nullptr;
    void (*hold)(const char*, int) = nullptr;
    int (*held)(const char*) = nullptr;
    int (*holdsGivenUp)() = nullptr;
    int (*translate)(const char*, char*, int) = nullptr;

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

    // Fires the callback of kind as the server would, from a thread of the SDK.
    void fire(int kind) const { fireCount(kind, 2); }

    // Every SDK call so far, one line each.
    QStringList callList() const
    {
        QByteArray buffer(calls(nullptr, 0), '\0');
        calls(buffer.data(), buffer.size());
        return QString::fromUtf8(buffer.constData()).split('\n', Qt::SkipEmptyParts);
    }
};
