#pragma once

#include <QString>

#include <array>

// The fonts of the folder tree and of the file table, and whether the table
// font follows the row height. Kept as family and point size so that this
// library stays free of Qt Gui; the views build their QFont from it:
// QFont(settings.GetFamily(FontSettings::Table), settings.GetPointSize(FontSettings::Table)).
class FontSettings final
{
public:
    enum Target
    {
        Tree = 0,
        Table = 1,
    };

    // The application's start-up font: the default of both slots and of the
    // font dialog's "Default" buttons. Set by the main window before the
    // settings are loaded.
    void SetDefaultFont(const QString& family, int pointSize);
    QString GetDefaultFamily() const { return defaultFace.family; }
    int GetDefaultPointSize() const { return defaultFace.pointSize; }

    void SetFont(int target, const QString& family, int pointSize);
    void SetFamily(int target, const QString& family);
    void SetPointSize(int target, int pointSize);
    QString GetFamily(int target) const;
    int GetPointSize(int target) const;

    void SetFitToCell(bool fit) { fitToCell = fit; }
    bool IsFitToCell() const { return fitToCell; }

private:
    struct Face
    {
        QString family;
        int pointSize = -1;
    };
    // Out-of-range targets fall back to the table slot rather than reading past the array.
    Face& face(int target);
    const Face& face(int target) const;

    Face defaultFace;
    std::array<Face, 2> faces;
    bool fitToCell = true;
};
