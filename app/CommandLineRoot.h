#pragma once

#include <QString>
#include <QStringList>

// The root folder named by the command line (arguments as QCoreApplication
// gives them, program first): the absolute path of an existing folder, or the
// folder of an existing supported audio file; empty for anything else.
QString CommandLineRoot(const QStringList& arguments);
