#include "TeskStyle.h"

#include "SystemTheme.h"

#include <QApplication>
#include <QStyleFactory>

TeskStyle::TeskStyle(TeskManager* manager, int systemDark)
    : QProxyStyle(QStyleFactory::create(QStringLiteral("fusion")))
    , manager(manager)
    , standardFusionPalette(baseStyle()->standardPalette())
    , systemDark(systemDark)
{}

void TeskStyle::polish(QPalette& palette)
{
    const TeskManager::ColorTheme theme = manager ? manager->GetColorTheme() : TeskManager::Light;
    bool dark = theme == TeskManager::Dark;
    if (theme == TeskManager::System) {
        if (systemDark < 0)
            systemDark = IsSystemDarkTheme() ? 1 : 0;
        dark = systemDark == 1;
    }
    palette = dark ? darkPalette() : standardFusionPalette;
}

QPalette TeskStyle::darkPalette()
{
    QPalette p;
    const QColor c(32, 32, 34);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        // Set as one group so that Qt derives Midlight, Shadow, ButtonText and
        // the rest from these nine.
        p.setColorGroup(group, QColor(240, 249, 250), c, c, c, c, QColor(240, 240, 240),
                        QColor(Qt::white), c.lighter(150), c);
        p.setColor(group, QPalette::Highlight, QColor(87, 158, 205, 128));
        p.setColor(group, QPalette::HighlightedText, QColor(Qt::white));
        p.setColor(group, QPalette::ToolTipBase, QColor(16, 16, 16));
        p.setColor(group, QPalette::ToolTipText, QColor(230, 230, 230));
    }
    // Disabled controls sit darker than the window, not greyed out lighter.
    const QColor d(8, 8, 10);
    p.setColorGroup(QPalette::Disabled, QColor(120, 120, 120), d, QColor(140, 140, 140), d, d,
                    QColor(130, 130, 130), QColor(140, 140, 140), d.lighter(150), d);
    p.setColor(QPalette::Disabled, QPalette::HighlightedText, QColor(Qt::gray));
    p.setColor(QPalette::AlternateBase, QColor(64, 64, 68));
    return p;
}

void ApplyTeskStyle(TeskManager* manager, int systemDark)
{
    // QApplication takes ownership and deletes the previous style.
    QApplication::setStyle(new TeskStyle(manager, systemDark));
}
