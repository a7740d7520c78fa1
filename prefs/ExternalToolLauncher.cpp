#include "ExternalToolLauncher.h"

#include <QProcess>

QStringList ExternalToolArguments(const QString& argumentTemplate, const QString& filePath)
{
    QString line = argumentTemplate;
    line.replace(QStringLiteral("%FILEPATH%"), filePath, Qt::CaseSensitive);
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool LaunchExternalTool(const QString& program, const QString& argumentTemplate,
                        const QString& filePath)
{
    if (program.isEmpty())
        return false;
    return QProcess::startDetached(program, ExternalToolArguments(argumentTemplate, filePath));
}
