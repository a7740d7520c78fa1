#include "GacSdkLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <map>
#include <mutex>

namespace Vexmw {

GacSdkLibrary::GacSdkLibrary(QStringList candidates)
    : m_candidates(std::move(candidates))
{}

const GacSdkLibrary& GacSdkLibrary::shared(const QStringList& candidates)
{
    static std::mutex mutex;
    static auto* libraries = new std::map<QStringList, GacSdkLibrary*>;
    const QStringList key = candidates.isEmpty() ? defaultCandidates() : candidates;
    std::lock_guard<std::mutex> lock(mutex);
    GacSdkLibrary*& library = (*libraries)[key];
    if (!library) {
        library = new GacSdkLibrary(key);
        library->load();
    }
    return *library;
}

QStringList GacSdkLibrary::defaultCandidates()
{
    QStringList list;
    if (QCoreApplication::instance())
        list << QCoreApplication::applicationDirPath();
    // A bare name lets the dynamic loader search its usual path.
    list << QString::fromLatin1(GacSdk::kLibraryBaseName);
    return list;
}

void GacSdkLibrary::load()
{
    QStringList tried;
    for (const QString& candidate : qAsConst(m_candidates)) {
        QString name = candidate;
        if (QFileInfo(candidate).isDir())
            name = QDir(candidate).filePath(QString::fromLatin1(GacSdk::kLibraryBaseName));
        m_library.setFileName(name);
        if (m_library.load())
            break;
        tried << m_library.errorString();
    }
    if (!m_library.isLoaded()) {
        m_failure =
            "Game Audio Connect SDK not found: " + tried.join(QStringLiteral("; ")).toStdString();
        return;
    }

    GacSdk::Api api;
    QStringList missing;
#define TESK_GAC_SDK_RESOLVE(name, ret, params)                                                    \
    api.name = reinterpret_cast<ret(*) params>(m_library.resolve(#name));                          \
    if (!api.name)                                                                                 \
        missing << QStringLiteral(#name);
    TESK_GAC_SDK_FUNCTIONS(TESK_GAC_SDK_RESOLVE)
#undef TESK_GAC_SDK_RESOLVE

    if (!missing.isEmpty()) {
        m_failure = "Game Audio Connect SDK " + m_library.fileName().toStdString() +
                    " lacks: " + missing.join(QStringLiteral(", ")).toStdString();
        return;
    }
    m_api = api;
    m_loaded = true;
}

} // namespace Vexmw
