#include "SubFormFont.h"

#include "FontSettings.h"
#include "SettingsLimits.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

QSpinBox* MakeSizeBox(QWidget* parent, const char* name)
{
    auto* box = new QSpinBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(kMinFontPointSize, kMaxFontPointSize);
    return box;
}

QLineEdit* MakePreview(QWidget* parent, const char* name)
{
    auto* preview = new QLineEdit(SubFormFont::previewText(), parent);
    preview->setObjectName(QString::fromLatin1(name));
    preview->setReadOnly(true);
    preview->setMinimumHeight(48);
    return preview;
}

} // namespace

SubFormFont::SubFormFont(FontSettings* fonts, QWidget* parent)
    : QDialog(parent)
    , fonts(fonts)
{
    setWindowTitle(tr("Font Setting"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto* groupTree = new QGroupBox(tr("Tree"), this);
    treeFontFamilies = new QFontComboBox(groupTree);
    treeFontFamilies->setObjectName(QStringLiteral("treeFontFamilies"));
    treeFontSize = MakeSizeBox(groupTree, "treeFontSize");
    treeTextPreview = MakePreview(groupTree, "treeTextPreview");
    defaultTreeFont = new QPushButton(tr("Default"), groupTree);
    defaultTreeFont->setObjectName(QStringLiteral("defaultTreeFont"));
    auto* treeLayout = new QGridLayout(groupTree);
    treeLayout->addWidget(treeFontFamilies, 0, 0);
    treeLayout->addWidget(treeFontSize, 0, 1);
    treeLayout->addWidget(treeTextPreview, 1, 0, 1, 2);
    treeLayout->addWidget(defaultTreeFont, 2, 1);
    treeLayout->setColumnStretch(0, 1);

    auto* groupTable = new QGroupBox(tr("Table"), this);
    tableFontFamilies = new QFontComboBox(groupTable);
    tableFontFamilies->setObjectName(QStringLiteral("tableFontFamilies"));
    tableFontSize = MakeSizeBox(groupTable, "tableFontSize");
    fitTableCell = new QCheckBox(tr("Fit to cell size"), groupTable);
    fitTableCell->setObjectName(QStringLiteral("fitTableCell"));
    tableTextPreview = MakePreview(groupTable, "tableTextPreview");
    defaultTableFont = new QPushButton(tr("Default"), groupTable);
    defaultTableFont->setObjectName(QStringLiteral("defaultTableFont"));
    auto* tableLayout = new QGridLayout(groupTable);
    tableLayout->addWidget(tableFontFamilies, 0, 0);
    tableLayout->addWidget(tableFontSize, 0, 1);
    tableLayout->addWidget(fitTableCell, 1, 0, 1, 2);
    tableLayout->addWidget(tableTextPreview, 2, 0, 1, 2);
    tableLayout->addWidget(defaultTableFont, 3, 1);
    tableLayout->setColumnStretch(0, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(groupTree);
    layout->addWidget(groupTable);
    layout->addWidget(buttons);

    loadFromSettings();

    connect(treeFontFamilies, &QFontComboBox::currentFontChanged, this,
            &SubFormFont::SlotTreeFontEdited);
    connect(treeFontSize, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &SubFormFont::SlotTreeFontEdited);
    connect(tableFontFamilies, &QFontComboBox::currentFontChanged, this,
            &SubFormFont::SlotTableFontEdited);
    connect(tableFontSize, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &SubFormFont::SlotTableFontEdited);
    connect(fitTableCell, &QCheckBox::toggled, this, &SubFormFont::SlotFitToggled);
    connect(defaultTreeFont, &QPushButton::clicked, this, &SubFormFont::SlotDefaultTreeFont);
    connect(defaultTableFont, &QPushButton::clicked, this, &SubFormFont::SlotDefaultTableFont);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

SubFormFont::~SubFormFont() = default;

QFont SubFormFont::fontOf(int target) const
{
    QString family = fonts->GetFamily(target);
    int size = fonts->GetPointSize(target);
    if (family.isEmpty())
        family = fonts->GetDefaultFamily();
    if (size < 1)
        size = fonts->GetDefaultPointSize();
    return QFont(family, size > 0 ? size : -1);
}

void SubFormFont::loadFromSettings()
{
    const QSignalBlocker b1(treeFontFamilies), b2(treeFontSize), b3(tableFontFamilies),
        b4(tableFontSize), b5(fitTableCell);
    const QFont tree = fontOf(FontSettings::Tree);
    const QFont table = fontOf(FontSettings::Table);
    treeFontFamilies->setCurrentFont(tree);
    treeFontSize->setValue(tree.pointSize());
    tableFontFamilies->setCurrentFont(table);
    tableFontSize->setValue(table.pointSize());
    fitTableCell->setChecked(fonts->IsFitToCell());
    // While fitting, the row height sets the size; typing one would be overwritten.
    tableFontSize->setEnabled(!fonts->IsFitToCell());
    updatePreviews();
}

void SubFormFont::updatePreviews()
{
    treeTextPreview->setFont(
        QFont(treeFontFamilies->currentFont().family(), treeFontSize->value()));
    tableTextPreview->setFont(
        QFont(tableFontFamilies->currentFont().family(), tableFontSize->value()));
}

void SubFormFont::showEvent(QShowEvent* event)
{
    loadFromSettings();
    QDialog::showEvent(event);
}

void SubFormFont::SlotTreeFontEdited()
{
    fonts->SetFont(FontSettings::Tree, treeFontFamilies->currentFont().family(),
                   treeFontSize->value());
    updatePreviews();
    emit SigChangeFont();
}

void SubFormFont::SlotTableFontEdited()
{
    fonts->SetFont(FontSettings::Table, tableFontFamilies->currentFont().family(),
                   tableFontSize->value());
    updatePreviews();
    emit SigChangeFont();
}

void SubFormFont::SlotFitToggled(bool fit)
{
    fonts->SetFitToCell(fit);
    tableFontSize->setEnabled(!fit);
    emit SigChangeFont();
}

void SubFormFont::SlotDefaultTreeFont()
{
    {
        const QSignalBlocker b1(treeFontFamilies), b2(treeFontSize);
        treeFontFamilies->setCurrentFont(QFont(fonts->GetDefaultFamily()));
        treeFontSize->setValue(fonts->GetDefaultPointSize());
    }
    SlotTreeFontEdited();
}

void SubFormFont::SlotDefaultTableFont()
{
    {
        const QSignalBlocker b1(tableFontFamilies), b2(tableFontSize);
        tableFontFamilies->setCurrentFont(QFont(fonts->GetDefaultFamily()));
        tableFontSize->setValue(fonts->GetDefaultPointSize());
    }
    SlotTableFontEdited();
}
