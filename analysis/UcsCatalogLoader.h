#pragma once

#include "UcsCatalog.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QThread;

// Reads the CatID list off the GUI thread: load() returns at once, and
// SigLoaded follows on the loader's thread when the newest request is done
// (earlier ones are dropped). The file is bounded in size, so the destructor's
// wait for a read in progress is short.
class UcsCatalogLoader final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(UcsCatalogLoader)

public:
    explicit UcsCatalogLoader(QObject* parent = nullptr);
    ~UcsCatalogLoader() override;

    // An empty path unloads the list (SigLoaded follows as well).
    void load(const QString& path);
    // The list of the last finished request; null when none is loaded.
    std::shared_ptr<const UcsCatalog> catalog() const { return current; }

signals:
    // `error` is empty on success and for an unloaded list.
    void SigLoaded(QString path, QString error);

private:
    std::shared_ptr<const UcsCatalog> current;
    int generation = 0;
    QList<QThread*> running;
};
