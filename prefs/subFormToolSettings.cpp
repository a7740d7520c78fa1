#include "subFormToolSettings.h"

#include "SettingsLimits.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
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

#include <algorithm>

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
#ifdef Q_OS_WIN
    buttonOpenFile->setToolTip(tr("Open an .exe or .app file..."));
#else
    // Programs on Linux have no .exe to name them by.
    buttonOpenFile->setToolTip(tr("Choose the program..."));
#endif
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

    auto* groupPreview = new QGroupBox(tr("Preview"), this);
    checkMatch = new QCheckBox(tr("Match loudness"), groupPreview);
    checkMatch->setObjectName(QStringLiteral("checkMatch"));
    spinTarget = new QDoubleSpinBox(groupPreview);
    spinTarget->setObjectName(QStringLiteral("spinTarget"));
    spinTarget->setRange(kMinMatchTargetLufs, kMaxMatchTargetLufs);
    spinTarget->setDecimals(1);
    spinTarget->setSingleStep(0.5);
    spinTarget->setSuffix(QStringLiteral(" LUFS"));
    spinTarget->setValue(-23.0);
    spinBoost = new QDoubleSpinBox(groupPreview);
    spinBoost->setObjectName(QStringLiteral("spinBoost"));
    spinBoost->setRange(0, kMaxMatchBoostDb);
    spinBoost->setDecimals(1);
    spinBoost->setSingleStep(1.0);
    spinBoost->setSuffix(QStringLiteral(" dB"));
    spinBoost->setValue(12.0);
    comboDevice = new QComboBox(groupPreview);
    comboDevice->setObjectName(QStringLiteral("comboDevice"));
    comboDevice->addItem(tr("System default"), QString());
    auto* previewLayout = new QGridLayout(groupPreview);
    previewLayout->addWidget(checkMatch, 0, 0, 1, 2);
    previewLayout->addWidget(new QLabel(tr("Loudness target"), groupPreview), 1, 0);
    previewLayout->addWidget(spinTarget, 1, 1);
    previewLayout->addWidget(new QLabel(tr("Largest boost"), groupPreview), 2, 0);
    previewLayout->addWidget(spinBoost, 2, 1);
    previewLayout->addWidget(new QLabel(tr("Output device"), groupPreview), 3, 0);
    previewLayout->addWidget(comboDevice, 3, 1);
    previewLayout->setColumnStretch(1, 1);
    auto* groupUcs = new QGroupBox(tr("UCS Category List"), this);
    editCatIdList = new QLineEdit(groupUcs);
    editCatIdList->setObjectName(QStringLiteral("editCatIdList"));
    editCatIdList->setClearButtonEnabled(true);
    buttonOpenCatIdList = new QToolButton(groupUcs);
    buttonOpenCatIdList->setObjectName(QStringLiteral("buttonOpenCatIdList"));
    buttonOpenCatIdList->setIcon(QIcon(QStringLiteral(":/images/open.png")));
    buttonOpenCatIdList->setToolTip(tr("Open a CSV or TSV file..."));
    auto* ucsLayout = new QGridLayout(groupUcs);
    auto* ucsHint = new QLabel(tr("CatID list exported from the UCS spreadsheet (CSV or TSV with "
                                  "CatID, Category and SubCategory columns). Without it, UCS file "
                                  "names still fill the CatID, FX Name, Creator and Source "
                                  "columns."),
                               groupUcs);
    ucsHint->setWordWrap(true);
    ucsLayout->addWidget(ucsHint, 0, 0, 1, 2);
    ucsLayout->addWidget(editCatIdList, 1, 0);
    ucsLayout->addWidget(buttonOpenCatIdList, 1, 1);

    auto* groupAnalysis = new QGroupBox(tr("Analysis"), this);
    spinAnalysisThreads = new QSpinBox(groupAnalysis);
    spinAnalysisThreads->setObjectName(QStringLiteral("spinAnalysisThreads"));
    spinAnalysisThreads->setRange(1, 1);
    auto* analysisLayout = new QGridLayout(groupAnalysis);
    auto* analysisHint = new QLabel(tr("Files analysed at once (one per processor core at most). "
                                       "Fewer leave more of the computer to other programs "
                                       "while a folder is analysed."),
                                    groupAnalysis);
    analysisHint->setWordWrap(true);
    analysisLayout->addWidget(analysisHint, 0, 0);
    analysisLayout->addWidget(spinAnalysisThreads, 1, 0);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("buttonOk"));
    ok->setDefault(true);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(groupTools);
    layout->addWidget(groupSeek);
    layout->addWidget(groupPreview);
    layout->addWidget(groupUcs);
    layout->addWidget(groupAnalysis);
    layout->addStretch(1);
    layout->addWidget(buttons);
    resize(460, sizeHint().height());

    editToolPath->setText(toolPath);
    editToolArgs->setText(toolArgs);
    spinSeekTime->setValue(seekTimeMs);

    connect(buttonOpenFile, &QToolButton::clicked, this, &subFormToolSettings::SlotPushedOpenFile);
    connect(buttonOpenCatIdList, &QToolButton::clicked, this,
            &subFormToolSettings::SlotPushedOpenCatIdList);
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

void subFormToolSettings::setAnalysisThreads(int threads, int cores)
{
    const int most = std::max(cores, 1);
    spinAnalysisThreads->setRange(1, most);
    spinAnalysisThreads->setValue(threads <= 0 ? most : std::min(threads, most));
}

int subFormToolSettings::analysisThreads() const
{
    // Every core stays "every core" on a computer with more of them.
    return spinAnalysisThreads->value() >= spinAnalysisThreads->maximum()
               ? 0
               : spinAnalysisThreads->value();
}

void subFormToolSettings::setMatchLoudness(bool on, double targetLufs, double maxBoostDb)
{
    checkMatch->setChecked(on);
    spinTarget->setValue(targetLufs);
    spinBoost->setValue(maxBoostDb);
}

bool subFormToolSettings::matchLoudness() const
{
    return checkMatch->isChecked();
}

double subFormToolSettings::matchTargetLufs() const
{
    return spinTarget->value();
}

double subFormToolSettings::matchMaxBoostDb() const
{
    return spinBoost->value();
}

void subFormToolSettings::setOutputDevices(const QStringList& devices, const QString& current)
{
    while (comboDevice->count() > 1)
        comboDevice->removeItem(1);
    for (const QString& name : devices)
        comboDevice->addItem(name, name);
    if (!current.isEmpty() && !devices.contains(current))
        comboDevice->addItem(tr("%1 (not available)").arg(current), current);
    comboDevice->setCurrentIndex(std::max(0, comboDevice->findData(current)));
}

QString subFormToolSettings::outputDevice() const
{
    return comboDevice->currentData().toString();
}

void subFormToolSettings::setUcsCatIdListPath(const QString& path)
{
    editCatIdList->setText(path);
}

QString subFormToolSettings::ucsCatIdListPath() const
{
    return editCatIdList->text().trimmed();
}

void subFormToolSettings::SlotPushedOpenCatIdList()
{
    const QFileInfo current(editCatIdList->text());
    const QString startDir = current.absoluteDir().exists() && !editCatIdList->text().isEmpty()
                                 ? current.absolutePath()
                                 : QString();
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Select the UCS CatID list"), startDir,
                                     tr("CSV or TSV files (*.csv *.tsv *.txt);;All files (*)"));
    if (!path.isEmpty())
        editCatIdList->setText(path);
}

void subFormToolSettings::SlotPushedOpenFile()
{
    const QFileInfo current(editToolPath->text());
    const QString startDir = (!editToolPath->text().isEmpty() && current.absoluteDir().exists())
                                 ? current.absolutePath()
                                 : QString();
    // No filter: on Windows this lists .exe files among others, and on Linux
    // any executable file, whatever its name, can be a tool.
#ifdef Q_OS_WIN
    const QString title = tr("Select external .exe file");
#else
    const QString title = tr("Select the external program");
#endif
    const QString path = QFileDialog::getOpenFileName(this, title, startDir);
    if (!path.isEmpty())
        editToolPath->setText(path);
}

QString subFormToolSettings::missingToolText()
{
#ifdef Q_OS_WIN
    return tr("Specified .exe file cannot be found. %1");
#else
    return tr("Specified program cannot be found. %1");
#endif
}

void subFormToolSettings::SlotPushedOk()
{
    const QString path = editToolPath->text();
    // A folder, or a file that cannot be run, would only fail at the launch.
    const QFileInfo tool(path);
    if (!path.isEmpty() && !(tool.isFile() && tool.isExecutable())) {
        const QString text = tool.exists()
                                 ? tr("Specified file is not a program that can be run. %1")
                                 : missingToolText();
        QMessageBox::critical(this, tr("Error"), text.arg(path), QMessageBox::Ok);
        return;
    }
    const QString list = ucsCatIdListPath();
    if (!list.isEmpty() && !QFileInfo(list).isFile()) {
        QMessageBox::critical(this, tr("Error"),
                              tr("Specified CatID list cannot be found. %1").arg(list),
                              QMessageBox::Ok);
        return;
    }
    accept();
}
