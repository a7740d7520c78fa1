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
    explicit GacSdkLibrary(QStringList candidates = {});
    GacSdkLibrary(const GacSdkLibrary&) = delete;
    GacSdkLibrary& operator=(const GacSdkLibrary&) = delete;

    // On failure, *why says what was missing. The library is never unloaded:
    // the SDK may still own threads when we let go of it.
    bool load(std::string* why);
    bool isLoaded() const { return m_loaded; }
    const GacSdk::Api& api() const { return m_api; }
    QString fileName() const { return m_library.fileName(); }

    static QStringList defaultCandidates();

private:
    QStringList m_candidates;
    QLibrary m_library;
    GacSdk::Api m_api;
    bool m_loaded = false;
};

} // namespace Vexmw
