#pragma once

class QVariant;

// Whether the desktop asks applications for a dark appearance. On Windows the
// "AppsUseLightTheme" registry value decides (0 = dark); elsewhere the XDG
// desktop portal's "color-scheme" (1 = prefer dark). No portal, no answer
// within a short time, or no value at all means light.
bool IsSystemDarkTheme();

// The portal's reply, unwrapped from the one or two D-Bus variants that
// ReadOne and the older Read put around it: 0 no preference, 1 prefer dark,
// 2 prefer light; -1 when the reply holds no number.
int PortalColorScheme(const QVariant& reply);
