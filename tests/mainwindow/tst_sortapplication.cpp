// The sort specification applied to a real file table: matching without
// regard to case, the marking of entries that named no file, the "No files to
// reorder." box, and dropping the specification when the CSV is switched off.
#include "SortSettingsApplication.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WidgetTableBrowser.h"
#include "subFormSortSettings.h"

#include "KrokTableSortModel.h"
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class tst_SortApplication final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings configDir;
    QTemporaryDir data;
    QString root;

    void analyse(subFormSortSettings& form, const QByteArray& csvText)
    {
        const QString csv = QDir(data.path()).filePath(QStringLiteral("order.csv"));
        QVERIFY(fixtures::WriteBytes(csv, csvText));
        form.setRelativeRoot(root);
        form.findChild<QGroupBox*>(QStringLiteral("groupUseCsv"))->setChecked(true);
        form.findChild<QLineEdit*>(QStringLiteral("editCsvPath"))->setText(csv);
        form.findChild<QSpinBox*>(QStringLiteral("spinCommentColumn"))->setValue(2);
        form.findChild<QCheckBox*>(QStringLiteral("checkIgnoreFirstLine"))->setChecked(false);
        form.findChild<QPushButton*>(QStringLiteral("buttonAnalyze"))->click();
        QVERIFY(form.isApplicable());
    }

    // Lists and analyses the library in `browser`.
    void show(TeskManager& manager)
    {
        QSignalSpy ended(&manager, &TeskManager::SigEndGetDetailInfo);
        manager.SlotChangeRootPathCalled(root);
        QTRY_VERIFY_WITH_TIMEOUT(ended.count() > 0, 10000);
    }

    static QString comment(WidgetTableBrowser& browser, const QString& name)
    {
        krokTableModel* model = browser.tableModel();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->fileName(row) == name)
                return model->data(model->index(row, 14)).toString();
        }
        return QStringLiteral("<no row>");
    }

private slots:
    void initTestCase()
    {
        QVERIFY(configDir.isValid());
        root = QDir(data.path()).filePath(QStringLiteral("Library"));
        QVERIFY(QDir().mkpath(root));
        for (const char* name : {"Boom.wav", "hit.wav", "zap.wav"})
            QVERIFY(fixtures::WriteBytes(root + QLatin1Char('/') + QLatin1String(name)));
    }

    void appliesToTheTable()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        show(manager);
        QCOMPARE(browser.tableModel()->rowCount(), 3);

        subFormSortSettings form;
        // The file on disk is Boom.wav; the list writes it in other cases, and
        // zap without its suffix. A full path keeps the root's own case.
        analyse(form, "zap,third\n" + root.toUtf8() + "/BOOM.WAV,first\nmissing.wav,none\n");
        QVERIFY(!ApplySortSettings(&form, &browser));

        QCOMPARE(comment(browser, QStringLiteral("Boom.wav")), QStringLiteral("first"));
        QCOMPARE(comment(browser, QStringLiteral("zap.wav")), QStringLiteral("third"));
        QCOMPARE(comment(browser, QStringLiteral("hit.wav")), QString());

        auto* table = form.findChild<QTableWidget*>(QStringLiteral("tableResult"));
        QCOMPARE(table->item(2, 0)->background().color(), QColor(Qt::red));
        QCOMPARE(table->item(0, 0)->background().color(), QColor(Qt::white));
        QCOMPARE(table->item(1, 0)->background().color(), QColor(Qt::white));

        // Listed files come first, in the list's order.
        const QAbstractItemModel* proxy = browser.sortModel();
        QCOMPARE(proxy->index(0, 0).data(257).toString(), root + QStringLiteral("/zap.wav"));
        QCOMPARE(proxy->index(1, 0).data(257).toString(), root + QStringLiteral("/Boom.wav"));

        // Switched off, the next application drops the order and comments.
        form.findChild<QGroupBox*>(QStringLiteral("groupUseCsv"))->setChecked(false);
        QVERIFY(!ApplySortSettings(&form, &browser));
        QCOMPARE(comment(browser, QStringLiteral("Boom.wav")), QString());
    }

    void nothingMatchedExplains()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        show(manager);

        subFormSortSettings form;
        analyse(form, "sub/boom.wav,a\nother/hit.wav,b\n");
        QString text;
        QTimer::singleShot(50, [&text] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                text = box->text();
                box->accept();
            }
        });
        QVERIFY(ApplySortSettings(&form, &browser));
        QVERIFY(text.startsWith(QStringLiteral("No files to reorder.\n")));
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(tst_SortApplication)
#include "tst_sortapplication.moc"
