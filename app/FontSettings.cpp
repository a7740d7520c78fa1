#include "FontSettings.h"

void FontSettings::SetDefaultFont(const QString& family, int pointSize)
{
    defaultFace.family = family;
    defaultFace.pointSize = pointSize;
}

void FontSettings::SetFont(int target, const QString& family, int pointSize)
{
    Face& f = face(target);
    f.family = family;
    f.pointSize = pointSize;
}

void FontSettings::SetFamily(int target, const QString& family)
{
    face(target).family = family;
}

void FontSettings::SetPointSize(int target, int pointSize)
{
    face(target).pointSize = pointSize;
}

QString FontSettings::GetFamily(int target) const
{
    return face(target).family;
}

int FontSettings::GetPointSize(int target) const
{
    return face(target).pointSize;
}

FontSettings::Face& FontSettings::face(int target)
{
    return faces[target == Tree ? 0 : 1];
}

const FontSettings::Face& FontSettings::face(int target) const
{
    return faces[target == Tree ? 0 : 1];
}
