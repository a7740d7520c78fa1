#include "IconProv.h"

#include <QFileInfo>

IconProv::IconProv()
    : folderIcon(QStringLiteral(":/images/folder.png"))
    , driveIcon(QStringLiteral(":/images/hd.png"))
{}

QIcon IconProv::icon(IconType type) const
{
    return type == Drive ? driveIcon : folderIcon;
}

QIcon IconProv::icon(const QFileInfo& info) const
{
    return info.isRoot() ? driveIcon : folderIcon;
}
