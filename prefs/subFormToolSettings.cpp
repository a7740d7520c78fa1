#include "subFormToolSettings.h"

#include "SettingsLimits.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

subFormToolSettings::subFormToolSettings(const QString& toolPath, const QString& toolArgs,
                                         int seekTimeMs, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Tool Settings"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto* groupTools = new QGroupBox(tr("External Tools"), this);
    editToolPath = new QLineEdit(groupTools);
    editToolPath->setObjectName(QStringLiteral("editToolPath"));
    buttonOpenFile = new QToolButton(groupTools);
    buttonOpenFile->setObjectName(QStringLiteral("buttonOpenFile"));
    buttonOpenFile->setIcon(QIcon(QStringLiteral(":/images/open.png")));
    buttonOpenFile->setToolTip(tr("Open an .exe or .app file..."));
    editToolArgs = new QLineEdit(QStringLiteral("%FILEPATH%"), groupTools);
    editToolArgs->setObjectName(QStringLiteral("editToolArgs"));

    auto* toolsLayout = new QGridLayout(groupTools);
    toolsLayout->addWidget(new QLabel(tr("Executable file path"), groupTools), 0, 0, 1, 2);
    toolsLayout->addWidget(editToolPath, 1, 0);
    toolsLayout->addWidget(buttonOpenFile, 1, 1);
    toolsLayout->addWidget(
        new QLabel(tr("Arguments: file path of the selected waveform is %FILEPATH%"), groupTools),
        2, 0, 1, 2);
    toolsLayout->addWidget(editToolArgs, 3, 0, 1, 2);

    auto* groupSeek = new QGroupBox(tr("Seek Settings"), this);
    spinSeekTime = new QSpinBox(groupSeek);
    spinSeekTime->setObjectName(QStringLiteral("spinSeekTime"));
    spinSeekTime->setRange(kMinSeekTimeMs, kMaxSeekTimeMs);
    spinSeekTime->setSingleStep(100);
    spinSeekTime->setAccelerated(true);
    spinSeekTime->setValue(1000);
    auto* seekLayout = new QGridLayout(groupSeek);
    seekLayout->addWidget(
        new QLabel(tr("Set playback time seek range with 'R' and 'T' keys (msec)"), groupSeek), 0,
        0);
    seekLayout->addWidget(spinSeekTime, 1, 0);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("buttonOk"));
    ok->setDefault(true);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(groupTools);
    layout->addWidget(groupSeek);
    layout->addStretch(1);
    layout->addWidget(buttons);
    resize(460, sizeHint().height());

    editToolPath->setText(toolPath);
    editToolArgs->setText(toolArgs);
    spinSeekTime->setValue(seekTimeMs);

    connect(buttonOpenFile, &QToolButton::clicked, this, &subFormToolSettings::SlotPushedOpenFile);
    // OK checks the path before accepting; the box must not accept on its own.
    connect(ok, &QPushButton::clicked, this, &subFormToolSettings::SlotPushedOk);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

subFormToolSettings::~subFormToolSettings() = default;

QString subFormToolSettings::toolPath() const
{
    return editToolPath->text();
}

QString subFormToolSettings::toolArgs() const
{
    return editToolArgs->text();
}

int subFormToolSettings::seekTimeMs() const
{
    return spinSeekTime->value();
}

void subFormToolSettings::SlotPushedOpenFile()
{
    const QFileInfo current(editToolPath->text());
    const QString startDir = (!editToolPath->text().isEmpty() && current.absoluteDir().exists())
                                 ? current.absolutePath()
                                 : QString();
    // No filter: on Windows this lists .exe files among others, and on Linux
    // any executable file, whatever its name, can be a tool.
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Select external .exe file"), startDir);
    if (!path.isEmpty())
        editToolPath->setText(path);
}

void subFormToolSettings::SlotPushedOk()
{
    const QString path = editToolPath->text();
    if (!path.isEmpty() && !QFileInfo::exists(path)) {
        QMessageBox::critical(this, tr("Error"),
                              tr("Specified .exe file cannot be found. %1").arg(path),
                              QMessageBox::Ok);
        return;
    }
    accept();
}
