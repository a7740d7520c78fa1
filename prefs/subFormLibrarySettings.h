#pragma once

#include "AnalysisLibrarySettings.h"

#include <QDialog>

class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QTableWidget;

// "Analysis Library Settings": where analysis results are kept (this
// computer, or a studio's PostgreSQL server: host, port, database, user; the
// password stays in libpq's own places) and the library roots, each a shared
// folder as this computer sees it under the name every machine knows it by.
// OK checks the entries; the caller applies them when the dialog is accepted.
class subFormLibrarySettings final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormLibrarySettings)

public:
    explicit subFormLibrarySettings(const AnalysisLibrarySettings& settings,
                                    QWidget* parent = nullptr);
    ~subFormLibrarySettings() override;

    AnalysisLibrarySettings settings() const;
    // What is wrong with the entries, one line each; empty when they will do.
    QStringList problems() const;

private slots:
    void SlotAddRoot();
    void SlotRemoveRoot();
    void SlotPushedOk();
    void SlotLocationChanged();

private:
    void addRootRow(const QString& name, const QString& folder);

    QRadioButton* radioLocal = nullptr;
    QRadioButton* radioServer = nullptr;
    QLineEdit* editHost = nullptr;
    QSpinBox* spinPort = nullptr;
    QLineEdit* editDatabase = nullptr;
    QLineEdit* editUser = nullptr;
    QTableWidget* tableRoots = nullptr;
    QPushButton* buttonRemoveRoot = nullptr;
};
