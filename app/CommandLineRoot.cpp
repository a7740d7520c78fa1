#include "CommandLineRoot.h"

#include "RootPathInput.h"

QString CommandLineRoot(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return QString();
    const RootRequest request = ResolveRootPath(arguments.at(1));
    if (!request.isAccepted())
        return QString();
    return request.file.isEmpty() ? request.folder : request.file;
}
