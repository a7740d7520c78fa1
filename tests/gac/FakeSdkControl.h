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
    int (*calls)(char*, int) = nullptr;
    void (*fire)(int) = nullptr;
    int (*translate)(const char*, char*, int) = nullptr;

    bool resolve(const QString& path)
    {
        QLibrary lib(path);
        reset = reinterpret_cast<void (*)()>(lib.resolve("fakeGacReset"));
        setResult = reinterpret_cast<void (*)(const char*, int)>(lib.resolve("fakeGacSetResult"));
        setExportedAsset =
            reinterpret_cast<void (*)(const char*)>(lib.resolve("fakeGacSetExportedAsset"));
        calls = reinterpret_cast<int (*)(char*, int)>(lib.resolve("fakeGacCalls"));
        fire = reinterpret_cast<void (*)(int)>(lib.resolve("fakeGacFire"));
        translate =
            reinterpret_cast<int (*)(const char*, char*, int)>(lib.resolve("fakeGacTranslate"));
        return reset && setResult && setExportedAsset && calls && fire && translate;
    }

    // Every SDK call so far, one line each.
    QStringList callList() const
    {
        QByteArray buffer(calls(nullptr, 0), '\0');
        calls(buffer.data(), buffer.size());
        return QString::fromUtf8(buffer.constData()).split('\n', Qt::SkipEmptyParts);
    }
};
