#pragma once

#include <QString>
#include <QStringList>

// What the command line names as the root (arguments as QCoreApplication
// gives them, program first): the absolute path of an existing folder or of an
// existing supported audio file (whose folder becomes the root, with the file
// selected); empty for anything else.
QString CommandLineRoot(const QStringList& arguments);
