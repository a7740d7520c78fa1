#include "ModalAnswer.h"
#include "TestSettings.h"
#include "subFormSortSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

class tst_subFormSortSettings final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString root;

    template<typename T>
    static T* child(subFormSortSettings& form, const char* name)
    {
        T* w = form.findChild<T*>(QString::fromLatin1(name));
        if (!w)
            qFatal("missing control %s", name);
        return w;
    }

    QString writeCsv(const QString& name, const QByteArray& bytes)
    {
        const QString path = QDir(root).filePath(name);
        return fixtures::WriteBytes(path, bytes) ? path : QString();
    }

    static void setUp(subFormSortSettings& form, const QString& csv, int pathColumn,
                      int commentColumn, bool ignoreFirst)
    {
        child<QGroupBox>(form, "groupUseCsv")->setChecked(true);
        child<QLineEdit>(form, "editCsvPath")->setText(csv);
        child<QSpinBox>(form, "spinPathColumn")->setValue(pathColumn);
        child<QSpinBox>(form, "spinCommentColumn")->setValue(commentColumn);
        child<QCheckBox>(form, "checkIgnoreFirstLine")->setChecked(ignoreFirst);
    }

    // Drags `localPath` over `onto` and drops it; true when the drop was taken.
    static bool drop(subFormSortSettings& form, QWidget* onto, const QString& localPath)
    {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(localPath)});
        const QPoint pos = onto->mapTo(&form, onto->rect().center());
        QDragEnterEvent enter(pos, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&form, &enter);
        QDropEvent dropEvent(pos, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        dropEvent.setAccepted(false);
        QApplication::sendEvent(&form, &dropEvent);
        return dropEvent.isAccepted();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        root = QDir(dir.path()).canonicalPath();
        for (const char* name : {"a.wav", "b.wav", "sub/c.wav"})
            QVERIFY(fixtures::WriteBytes(QDir(root).filePath(QLatin1String(name))));
    }

    void opensAtItsDesignedWidth()
    {
        subFormSortSettings form;
        form.setRelativeRoot(root);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        // No row asks for more, whatever the UI font measures.
        QCOMPARE(form.width(), subFormSortSettings::kDesignedWidth);
        QVERIFY(form.minimumSizeHint().width() <= subFormSortSettings::kDesignedWidth);
        // The long option's text, beside its box, toggles it when clicked.
        auto* box = child<QCheckBox>(form, "checkMoveToRoot");
        QLabel* text = nullptr;
        for (QLabel* label : form.findChildren<QLabel*>()) {
            if (label->buddy() == box)
                text = label;
        }
        QVERIFY(text);
        QVERIFY(text->width() < subFormSortSettings::kDesignedWidth);
        QTest::mouseClick(text, Qt::LeftButton);
        QVERIFY(!box->isChecked());
        QTest::mouseClick(text, Qt::LeftButton);
        QVERIFY(box->isChecked());
    }

    void analyzesAndResolves()
    {
        subFormSortSettings form;
        form.setRelativeRoot(root);
        setUp(form,
              writeCsv(QStringLiteral("two.csv"), "a.wav,first\nb,second\n\"sub/c.wav\",third\n"),
              1, 2, false);
        child<QPushButton>(form, "buttonAnalyze")->click();
        QVERIFY(form.isApplicable());
        const SortEntryList expected{
            {root + QStringLiteral("/a.wav"), QStringLiteral("first")},
            {root + QStringLiteral("/b.wav"), QStringLiteral("second")},
            {root + QStringLiteral("/sub/c.wav"), QStringLiteral("third")}};
        QCOMPARE(form.entries(), expected);
        // The table shows what the file says, not what it resolved to.
        auto* table = child<QTableWidget>(form, "tableResult");
        QCOMPARE(table->rowCount(), 3);
        QCOMPARE(table->item(2, 0)->text(), QStringLiteral("\"sub/c.wav\""));
        QCOMPARE(table->item(2, 1)->text(), QStringLiteral("third"));
        child<QGroupBox>(form, "groupUseCsv")->setChecked(false);
        QVERIFY(!form.isApplicable());
    }

    void missingRootFallsBackToTheCsvFolder()
    {
        QTemporaryDir other;
        const QString csvDir = QDir(other.path()).canonicalPath();
        const QString csv = csvDir + QStringLiteral("/list.csv");
        QVERIFY(fixtures::WriteBytes(csvDir + QStringLiteral("/near.wav")));
        QVERIFY(fixtures::WriteBytes(csv, "near,x\n"));
        subFormSortSettings form;
        form.setRelativeRoot(root + QStringLiteral("/no-such-folder"));
        setUp(form, csv, 1, 2, false);
        child<QPushButton>(form, "buttonAnalyze")->click();
        QCOMPARE(form.entries().value(0).first, csvDir + QStringLiteral("/near.wav"));
    }

    void analysisErrors_data()
    {
        QTest::addColumn<QString>("csvName");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("pathColumn");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing file")
            << "" << QByteArray() << 1 << "The CSV file could not be found.";
        QTest::newRow("path column 3 of 2")
            << "cols.csv" << QByteArray("a.wav,x\nb.wav,y\n") << 3 << "CSV file analysis failed.";
        QTest::newRow("empty file")
            << "empty.csv" << QByteArray() << 1 << "CSV file analysis failed.";
    }

    void analysisErrors()
    {
        QFETCH(QString, csvName);
        QFETCH(QByteArray, bytes);
        QFETCH(int, pathColumn);
        QFETCH(QString, message);
        subFormSortSettings form;
        form.setRelativeRoot(root);
        // A good analysis first, so the failure must also clear the old result.
        setUp(form, writeCsv(QStringLiteral("good.csv"), "a.wav,x\n"), 1, 2, false);
        child<QPushButton>(form, "buttonAnalyze")->click();
        QVERIFY(form.isApplicable());
        const QString csv = csvName.isEmpty() ? QDir(root).filePath(QStringLiteral("absent.csv"))
                                              : writeCsv(csvName, bytes);
        setUp(form, csv, pathColumn, 2, false);
        QString title, text;
        fixtures::AnswerNextModal<QMessageBox>([&](QMessageBox* box) {
            title = box->windowTitle();
            text = box->text();
            box->accept();
        });
        child<QPushButton>(form, "buttonAnalyze")->click();
        QCOMPARE(title, QStringLiteral("Error"));
        QCOMPARE(text, message);
        QVERIFY(!form.isApplicable());
        QVERIFY(form.entries().isEmpty());
        QCOMPARE(child<QTableWidget>(form, "tableResult")->rowCount(), 0);
        QVERIFY(!QApplication::overrideCursor());
    }

    // Moving to the root first means applying once its new file list is in;
    // without the move the order applies at once.
    void applyWaitsForTheNewListOnlyWhenTheRootChanges()
    {
        subFormSortSettings form;
        form.setRelativeRoot(root);
        QSignalSpy applied(&form, &subFormSortSettings::SigSortSettingApplied);
        QSignalSpy rootCalled(&form, &subFormSortSettings::SigChangeRootPathCalled);
        form.SlotFileListAcquired(); // no apply pending: nothing happens
        QCOMPARE(applied.count(), 0);
        child<QPushButton>(form, "buttonApply")->click();
        QCOMPARE(rootCalled.count(), 1);
        QCOMPARE(rootCalled.at(0).at(0).toString(), root);
        QCOMPARE(applied.count(), 0);
        QVERIFY(form.isApplyPending());
        form.SlotFileListAcquired();
        QCOMPARE(applied.count(), 1);
        QVERIFY(!form.isApplyPending());
        form.SlotFileListAcquired();
        QCOMPARE(applied.count(), 1);
        child<QCheckBox>(form, "checkMoveToRoot")->setChecked(false);
        child<QPushButton>(form, "buttonApply")->click();
        QCOMPARE(applied.count(), 2);
        QCOMPARE(rootCalled.count(), 1);
    }

    // A .csv file that exists lands in the list's field (also dropped on the
    // table), a folder in the root's; anything else is refused.
    void drops()
    {
        subFormSortSettings form;
        form.resize(500, 500);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        auto* csvEdit = child<QLineEdit>(form, "editCsvPath");
        auto* rootEdit = child<QLineEdit>(form, "editRelativeRoot");
        QWidget* table = child<QTableWidget>(form, "tableResult")->viewport();
        const QString csv = writeCsv(QStringLiteral("Drop.CSV"), "a.wav,x\n");
        const QString folder = QDir(root).filePath(QStringLiteral("sub"));
        QVERIFY(!drop(form, csvEdit, csv)); // refused while the group is unchecked
        child<QGroupBox>(form, "groupUseCsv")->setChecked(true);
        const struct
        {
            QWidget* onto;
            QString path;
            QLineEdit* lands; // null: refused
        } cases[] = {{csvEdit, csv, csvEdit},
                     {table, csv, csvEdit},
                     {rootEdit, folder, rootEdit},
                     {rootEdit, csv, nullptr},
                     {csvEdit, folder, nullptr},
                     {csvEdit, QDir(root).filePath(QStringLiteral("a.wav")), nullptr},
                     {csvEdit, QDir(root).filePath(QStringLiteral("gone.csv")), nullptr}};
        for (const auto& c : cases) {
            csvEdit->clear();
            rootEdit->clear();
            QCOMPARE(drop(form, c.onto, c.path), c.lands != nullptr);
            QCOMPARE(csvEdit->text(), c.lands == csvEdit ? c.path : QString());
            QCOMPARE(rootEdit->text(), c.lands == rootEdit ? c.path : QString());
        }
    }
};

QTEST_MAIN(tst_subFormSortSettings)
#include "tst_subformsortsettings.moc"
