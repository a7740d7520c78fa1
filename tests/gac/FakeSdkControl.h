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
    void (*fire)(int) = nullptr;
    void (*fireCount)(int, int) = nullptr;
    void (*fireDuring)(const char*, int) = nullptr;
    void (*hold)(const char*, int) = nullptr;
    int (*held)(const char*) = nullptr;
    int (*holdsGivenUp)() = nullptr;
    int (*translate)(const char*, char*, int) = nullptr;

    template<typename F>
    static bool resolveOne(QLibrary& lib, F& f, const char* name)
    {
        f = reinterpret_cast<F>(lib.resolve(name));
        return f != nullptr;
    }

    bool resolve(const QString& path)
    {
        QLibrary lib(path);
        return resolveOne(lib, reset, "fakeGacReset") &&
               resolveOne(lib, setResult, "fakeGacSetResult") &&
               resolveOne(lib, setExportedAsset, "fakeGacSetExportedAsset") &&
               resolveOne(lib, setExportedCounts, "fakeGacSetExportedCounts") &&
               resolveOne(lib, calls, "fakeGacCalls") && resolveOne(lib, fire, "fakeGacFire") &&
               resolveOne(lib, fireCount, "fakeGacFireCount") &&
               resolveOne(lib, fireDuring, "fakeGacFireDuring") &&
               resolveOne(lib, hold, "fakeGacHold") && resolveOne(lib, held, "fakeGacHeld") &&
               resolveOne(lib, holdsGivenUp, "fakeGacHoldsGivenUp") &&
               resolveOne(lib, translate, "fakeGacTranslate");
    }

    // Every SDK call so far, one line each.
    QStringList callList() const
    {
        QByteArray buffer(calls(nullptr, 0), '\0');
        calls(buffer.data(), buffer.size());
        return QString::fromUtf8(buffer.constData()).split('\n', Qt::SkipEmptyParts);
    }
};
