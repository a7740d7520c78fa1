#include "GacSdkLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace Vexmw {

GacSdkLibrary::GacSdkLibrary(QStringList candidates)
    : m_candidates(candidates.isEmpty() ? defaultCandidates() : std::move(candidates))
{}

QStringList GacSdkLibrary::defaultCandidates()
{
    QStringList list;
    if (QCoreApplication::instance())
        list << QCoreApplication::applicationDirPath();
    // A bare name lets the dynamic loader search its usual path.
    list << QString::fromLatin1(GacSdk::kLibraryBaseName);
    return list;
}

bool GacSdkLibrary::load(std::string* why)
{
    if (m_loaded)
        return true;
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
        if (why)
            *why = "Game Audio Connect SDK not found: " +
                   tried.join(QStringLiteral("; ")).toStdString();
        return false;
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
        if (why)
            *why = "Game Audio Connect SDK " + m_library.fileName().toStdString() +
                   " lacks: " + missing.join(QStringLiteral(", ")).toStdString();
        return false;
    }
    m_api = api;
    m_loaded = true;
    return true;
}

} // namespace Vexmw
