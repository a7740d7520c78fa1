#pragma once

#include "GacSdk.h"

#include <QLibrary>
#include <QStringList>

#include <string>

namespace Vexmw {

// Loads the vendor SDK at run time and resolves its functions by name. Each
// candidate is a folder (searched for the library's base name) or a library
// file; by default the executable's folder comes first, then the system's
// library path.
class GacSdkLibrary final
{
public:
    GacSdkLibrary(const GacSdkLibrary&) = delete;
    GacSdkLibrary& operator=(const GacSdkLibrary&) = delete;

    // The library for these candidates, loaded on first use and kept for the
    // rest of the process, never unloaded or destroyed: the SDK may still own
    // threads when its clients are gone, and a handle released after Qt's own
    // bookkeeping of loaded libraries has ended at exit would be lost.
    static const GacSdkLibrary& shared(const QStringList& candidates);

    bool isLoaded() const { return m_loaded; }
    // Why it is not loaded.
    const std::string& failure() const { return m_failure; }
    const GacSdk::Api& api() const { return m_api; }
    QString fileName() const { return m_library.fileName(); }

    static QStringList defaultCandidates();

private:
    explicit GacSdkLibrary(QStringList candidates);
    void load();

    QStringList m_candidates;
    QLibrary m_library;
    GacSdk::Api m_api;
    bool m_loaded = false;
    std::string m_failure;
};

} // namespace Vexmw
