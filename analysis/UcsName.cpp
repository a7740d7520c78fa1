#include "UcsName.h"

#include "UcsCatalog.h"

#include <QStringList>

namespace {

constexpr int kMaxCatIdLength = 16;

bool isUpper(QChar c)
{
    return c >= QLatin1Char('A') && c <= QLatin1Char('Z');
}

bool isLowerOrDigit(QChar c)
{
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
           (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
}

bool hasLetter(const QString& text)
{
    for (const QChar c : text) {
        if (c.isLetter())
            return true;
    }
    return false;
}

} // namespace

bool LooksLikeCatId(const QString& text)
{
    if (text.size() < 4 || text.size() > kMaxCatIdLength)
        return false;
    int capitals = 0;
    while (capitals < text.size() && isUpper(text.at(capitals)))
        ++capitals;
    // The subcategory starts with a capital and goes on in small letters.
    if (capitals < 3 || capitals == text.size() ||
        !(text.at(capitals) >= QLatin1Char('a') && text.at(capitals) <= QLatin1Char('z')))
        return false;
    for (int i = capitals; i < text.size(); ++i) {
        if (!isLowerOrDigit(text.at(i)))
            return false;
    }
    return true;
}

UcsName ParseUcsName(const QString& fileName, const UcsCatalog* catalog)
{
    QString base = fileName.mid(fileName.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = base.lastIndexOf(QLatin1Char('.'));
    if (dot > 0)
        base.truncate(dot);
    const QStringList blocks = base.split(QLatin1Char('_'));
    if (blocks.size() < 4)
        return {};
    for (int i = 0; i < 4; ++i) {
        if (blocks.at(i).trimmed().isEmpty())
            return {};
    }

    UcsName name;
    const QString& first = blocks.at(0);
    const int dash = first.indexOf(QLatin1Char('-'));
    QString catId = dash < 0 ? first : first.left(dash);
    if (catalog) {
        const UcsCatalog::Entry* entry = catalog->find(catId);
        if (!entry)
            return {};
        catId = entry->catId;
        name.category = entry->category;
        name.subCategory = entry->subCategory;
    } else if (!LooksLikeCatId(catId) || !hasLetter(blocks.at(2)) || !hasLetter(blocks.at(3))) {
        // Without the list, "ABCDef_take_01_02" is a numbered take, not a creator and source.
        return {};
    }
    name.catId = catId;
    if (dash >= 0)
        name.userCategory = first.mid(dash + 1);
    name.fxName = blocks.at(1).trimmed();
    name.creatorId = blocks.at(2).trimmed();
    name.sourceId = blocks.at(3).trimmed();
    name.userData = blocks.mid(4).join(QLatin1Char('_'));
    return name;
}
