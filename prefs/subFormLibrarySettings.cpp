#include "subFormLibrarySettings.h"

#include "LibraryRoots.h"
#include "SettingsLimits.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

enum RootColumn
{
    NameColumn,
    FolderColumn,
};

QString CellText(const QTableWidget* table, int row, int column)
{
    const QTableWidgetItem* item = table->item(row, column);
    return item ? item->text().trimmed() : QString();
}

} // namespace

subFormLibrarySettings::subFormLibrarySettings(const AnalysisLibrarySettings& current,
                                               QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Analysis Library Settings"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto* groupWhere = new QGroupBox(tr("Where analysis results are kept"), this);
    radioLocal = new QRadioButton(tr("On this computer"), groupWhere);
    radioLocal->setObjectName(QStringLiteral("radioLocal"));
    radioServer =
        new QRadioButton(tr("In the studio's shared library on a PostgreSQL server"), groupWhere);
    radioServer->setObjectName(QStringLiteral("radioServer"));
    editHost = new QLineEdit(groupWhere);
    editHost->setObjectName(QStringLiteral("editHost"));
    editHost->setPlaceholderText(tr("server name, address or socket folder"));
    spinPort = new QSpinBox(groupWhere);
    spinPort->setObjectName(QStringLiteral("spinPort"));
    spinPort->setRange(kMinPortNumber, kMaxPortNumber);
    editDatabase = new QLineEdit(groupWhere);
    editDatabase->setObjectName(QStringLiteral("editDatabase"));
    editUser = new QLineEdit(groupWhere);
    editUser->setObjectName(QStringLiteral("editUser"));
    auto* serverForm = new QFormLayout;
    serverForm->addRow(tr("Host"), editHost);
    serverForm->addRow(tr("Port"), spinPort);
    serverForm->addRow(tr("Database"), editDatabase);
    serverForm->addRow(tr("User"), editUser);
    auto* passwordHint = new QLabel(
        tr("Tesk never stores the password: it is read from the password file (PGPASSFILE, "
           "else ~/.pgpass) or from PGPASSWORD. When the server cannot be reached, results are "
           "kept on this computer and sent to it later."),
        groupWhere);
    passwordHint->setWordWrap(true);
    auto* whereLayout = new QVBoxLayout(groupWhere);
    whereLayout->addWidget(radioLocal);
    whereLayout->addWidget(radioServer);
    whereLayout->addLayout(serverForm);
    whereLayout->addWidget(passwordHint);

    auto* groupRoots = new QGroupBox(tr("Library Roots"), this);
    auto* rootsHint = new QLabel(
        tr("A shared folder under the name every workstation gives it (for example SFX for "
           "/mnt/sfx here and S:\\ on a Windows workstation): files under it are found by "
           "every machine, wherever it mounts the share."),
        groupRoots);
    rootsHint->setWordWrap(true);
    tableRoots = new QTableWidget(0, 2, groupRoots);
    tableRoots->setObjectName(QStringLiteral("tableRoots"));
    tableRoots->setHorizontalHeaderLabels({tr("Name"), tr("Folder on this computer")});
    tableRoots->horizontalHeader()->setSectionResizeMode(NameColumn, QHeaderView::ResizeToContents);
    tableRoots->horizontalHeader()->setStretchLastSection(true);
    tableRoots->verticalHeader()->hide();
    tableRoots->setSelectionBehavior(QAbstractItemView::SelectRows);
    auto* buttonAddRoot = new QPushButton(tr("Add..."), groupRoots);
    buttonAddRoot->setObjectName(QStringLiteral("buttonAddRoot"));
    buttonRemoveRoot = new QPushButton(tr("Remove"), groupRoots);
    buttonRemoveRoot->setObjectName(QStringLiteral("buttonRemoveRoot"));
    auto* rootButtons = new QHBoxLayout;
    rootButtons->addWidget(buttonAddRoot);
    rootButtons->addWidget(buttonRemoveRoot);
    rootButtons->addStretch(1);
    auto* rootsLayout = new QVBoxLayout(groupRoots);
    rootsLayout->addWidget(rootsHint);
    rootsLayout->addWidget(tableRoots);
    rootsLayout->addLayout(rootButtons);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("buttonOk"));
    ok->setDefault(true);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(groupWhere);
    layout->addWidget(groupRoots, 1);
    layout->addWidget(buttons);
    resize(520, sizeHint().height());

    (current.onServer ? radioServer : radioLocal)->setChecked(true);
    editHost->setText(current.server.host);
    spinPort->setValue(current.server.port);
    editDatabase->setText(current.server.database);
    editUser->setText(current.server.user);
    // Entries as stored, in their order, a wrong one included for the user to mend.
    for (const QString& entry : current.roots) {
        const int split = entry.indexOf(QLatin1Char('='));
        addRootRow(split < 0 ? QString() : entry.left(split), entry.mid(split + 1));
    }
    SlotLocationChanged();

    connect(radioServer, &QRadioButton::toggled, this,
            &subFormLibrarySettings::SlotLocationChanged);
    connect(buttonAddRoot, &QPushButton::clicked, this, &subFormLibrarySettings::SlotAddRoot);
    connect(buttonRemoveRoot, &QPushButton::clicked, this, &subFormLibrarySettings::SlotRemoveRoot);
    connect(ok, &QPushButton::clicked, this, &subFormLibrarySettings::SlotPushedOk);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

subFormLibrarySettings::~subFormLibrarySettings() = default;

void subFormLibrarySettings::addRootRow(const QString& name, const QString& folder)
{
    const int row = tableRoots->rowCount();
    tableRoots->insertRow(row);
    tableRoots->setItem(row, NameColumn, new QTableWidgetItem(name));
    tableRoots->setItem(row, FolderColumn, new QTableWidgetItem(folder));
}

AnalysisLibrarySettings subFormLibrarySettings::settings() const
{
    AnalysisLibrarySettings chosen;
    chosen.onServer = radioServer->isChecked();
    chosen.server.host = editHost->text().trimmed();
    chosen.server.port = spinPort->value();
    chosen.server.database = editDatabase->text().trimmed();
    chosen.server.user = editUser->text().trimmed();
    for (int row = 0; row < tableRoots->rowCount(); ++row) {
        const QString name = CellText(tableRoots, row, NameColumn);
        const QString folder = CellText(tableRoots, row, FolderColumn);
        if (!name.isEmpty() || !folder.isEmpty())
            chosen.roots << name + QLatin1Char('=') + folder;
    }
    return chosen;
}

QStringList subFormLibrarySettings::problems() const
{
    const AnalysisLibrarySettings chosen = settings();
    QStringList found;
    if (chosen.onServer && chosen.server.database.isEmpty())
        found << tr("Name the database of the shared library.");
    LibraryRoots::Parse(chosen.roots, &found);
    if (chosen.roots.size() > kMaxLibraryRoots)
        found << tr("Give at most %1 library roots.").arg(kMaxLibraryRoots);
    return found;
}

void subFormLibrarySettings::SlotLocationChanged()
{
    const bool server = radioServer->isChecked();
    for (QWidget* field : {static_cast<QWidget*>(editHost), static_cast<QWidget*>(spinPort),
                           static_cast<QWidget*>(editDatabase), static_cast<QWidget*>(editUser)})
        field->setEnabled(server);
}

void subFormLibrarySettings::SlotAddRoot()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Select a shared folder"));
    if (folder.isEmpty())
        return;
    addRootRow(QString(), QDir::toNativeSeparators(folder));
    const int row = tableRoots->rowCount() - 1;
    tableRoots->setCurrentCell(row, NameColumn);
    tableRoots->editItem(tableRoots->item(row, NameColumn));
}

void subFormLibrarySettings::SlotRemoveRoot()
{
    const int row = tableRoots->currentRow();
    if (row >= 0)
        tableRoots->removeRow(row);
}

void subFormLibrarySettings::SlotPushedOk()
{
    QStringList found = problems();
    if (!found.isEmpty()) {
        for (QString& line : found)
            line[0] = line.at(0).toUpper();
        QMessageBox::warning(this, windowTitle(), found.join(QLatin1Char('\n')));
        return;
    }
    accept();
}
