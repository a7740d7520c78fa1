#pragma once

#include "TeskManager.h"

#include <QPalette>
#include <QProxyStyle>

// The application style: fusion, with a dark palette while the dark theme is
// in force (chosen, or "System" on a dark desktop). Replacing the application
// style with a new TeskStyle is how a theme change reaches every widget.
class TeskStyle final : public QProxyStyle
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TeskStyle)

public:
    // `systemDark` (0 light, 1 dark) is the desktop's scheme when already
    // known, as after a change was announced; -1 asks the desktop.
    explicit TeskStyle(TeskManager* manager, int systemDark = -1);

    using QProxyStyle::polish;
    void polish(QPalette& palette) override;

    static QPalette darkPalette();

private:
    TeskManager* manager;
    QPalette standardFusionPalette;
    // The desktop is asked once per style: Qt polishes palettes several times,
    // and a theme change installs a new style anyway.
    int systemDark = -1;
};

// Installs a new TeskStyle as the application style, which repolishes every
// widget with the palette of the manager's current theme.
void ApplyTeskStyle(TeskManager* manager, int systemDark = -1);
