#include "UcsCatalogLoader.h"

#include <QThread>

namespace {

struct LoadResult
{
    std::shared_ptr<const UcsCatalog> catalog;
    QString error;
};

} // namespace

UcsCatalogLoader::UcsCatalogLoader(QObject* parent)
    : QObject(parent)
{}

UcsCatalogLoader::~UcsCatalogLoader()
{
    for (QThread* thread : qAsConst(running)) {
        thread->wait();
        delete thread;
    }
}

void UcsCatalogLoader::load(const QString& path)
{
    const int request = ++generation;
    auto result = std::make_shared<LoadResult>();
    QThread* thread = QThread::create([path, result] {
        if (!path.isEmpty())
            result->catalog = UcsCatalog::load(path, &result->error);
    });
    running.append(thread);
    connect(thread, &QThread::finished, this, [this, thread, result, request, path] {
        running.removeOne(thread);
        thread->deleteLater();
        if (request != generation)
            return;
        current = result->catalog;
        emit SigLoaded(path, result->error);
    });
    thread->start();
}
