#pragma once

#include <QList>
#include <QString>

// A named root folder. The list order is the order of the "Bookmark" menu.
struct Bookmark
{
    QString path;
    QString name;

    friend bool operator==(const Bookmark& a, const Bookmark& b)
    {
        return a.path == b.path && a.name == b.name;
    }
    friend bool operator!=(const Bookmark& a, const Bookmark& b) { return !(a == b); }
};

using BookmarkList = QList<Bookmark>;
