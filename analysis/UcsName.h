#pragma once

#include <QString>

class UcsCatalog;

// The blocks of a file name that follows the Universal Category System:
// CatID[-UserCategory]_FXName_CreatorID_SourceID[_UserData].ext, with the
// category and subcategory names of the CatID when a CatID list is loaded.
struct UcsName
{
    QString catId;
    QString userCategory;
    QString fxName;
    QString creatorId;
    QString sourceId;
    QString userData;
    QString category;    // from the CatID list
    QString subCategory; // from the CatID list

    bool isValid() const { return !catId.isEmpty(); }
};

// The UCS blocks of `fileName` (with or without folder and suffix). With a
// catalog the first block must name one of its CatIDs (letter case aside; the
// list's spelling is kept). Without one it must look like a CatID: three or
// more capitals (an upper-case category prefix and the subcategory's capital)
// then small letters or digits, as in "DOORWood" or "UIClick", and creator
// and source must hold a letter. Either way FX name, creator and source must
// be there. Any other name yields an empty (invalid) value.
UcsName ParseUcsName(const QString& fileName, const UcsCatalog* catalog);

// The shape of a CatID, used when no list is loaded.
bool LooksLikeCatId(const QString& text);
