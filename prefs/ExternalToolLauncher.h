#pragma once

#include <QStringList>

// The argument list handed to the external tool: every "%FILEPATH%" (case
// sensitive) becomes filePath, then the line is split at spaces with empty
// parts dropped. There is no quoting, so a path with a space arrives as
// several arguments; users' tool set-ups rely on exactly this rule.
QStringList ExternalToolArguments(const QString& argumentTemplate, const QString& filePath);

// Starts the tool detached, without a working directory, and does not watch
// it. An empty program does nothing. Returns whether the process started.
bool LaunchExternalTool(const QString& program, const QString& argumentTemplate,
                        const QString& filePath);
