#pragma once

#include <QFileIconProvider>
#include <QIcon>

// The folder tree's icons: a drive icon for file-system roots and a folder
// icon for everything else, so the tree never shows the system's icons.
class IconProv final : public QFileIconProvider
{
public:
    IconProv();

    QIcon icon(IconType type) const override;
    QIcon icon(const QFileInfo& info) const override;

private:
    QIcon folderIcon;
    QIcon driveIcon;
};
