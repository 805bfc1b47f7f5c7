// SPDX-License-Identifier: GPL-2.0-or-later

#include <QDateTime>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>

#include "tests/services/ShownLog.h"
#include "widgets/Metrics.h"

// Tests of saving the log, and of the dialogs for this.
class LogWindowSaveTest : public ShownLog
{
    Q_OBJECT

private Q_SLOTS:
    void theSavedFileContainsTheShownLinesWithTheirTimes();
    void savingToAnExistingFileFirstAsksWhetherToReplaceIt();
    void aMessageBoxShowsTheFileNameIfTheLogCannotBeSaved();
    void hidingTheWindowClosesItsDialogs();
};

void LogWindowSaveTest::theSavedFileContainsTheShownLinesWithTheirTimes()
{
    log(Log::Info, 0, "shown <b>");
    log(Log::Info, 5, "detail");
    log(Log::Error, 0, "last \u00fc");
    open();
    QTemporaryDir directory;
    const QString path = directory.filePath("log.txt");
    button("&Save...")->click();
    const QPointer<QFileDialog> dialog = window->findChild<QFileDialog*>();
    QVERIFY(dialog != nullptr && QTest::qWaitForWindowActive(dialog));
    // Qt's own size for the dialog does not depend on the font, so VYRE sets a minimum size in columns and
    // rows.
    const QSize screen = Metrics::maxWindowSize();
    const QFontMetrics metrics = dialog->fontMetrics();
    QVERIFY(dialog->width() >= qMin(screen.width(), 85 * Metrics::columnWidth(metrics)));
    QVERIFY(dialog->height() >= qMin(screen.height(), 22 * metrics.lineSpacing()));
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    name->setText(path);
    dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    QTRY_VERIFY2(QFile::exists(path),
                 dialog.isNull() ? "closed" : qPrintable(dialog->selectedFiles().join(' ')));
    QCOMPARE(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList saved = QString::fromUtf8(file.readAll()).split('\n');
    QCOMPARE(saved.size(), 3);
    QVERIFY(QDateTime::fromString(saved.at(0).left(19), Qt::ISODate).isValid());
    QCOMPARE(saved.at(0).mid(19), QString("  shown <b>"));
    QCOMPARE(saved.at(1).mid(19), QString("  last \u00fc"));
    QCOMPARE(saved.at(2), QString());
}

void LogWindowSaveTest::savingToAnExistingFileFirstAsksWhetherToReplaceIt()
{
    log(Log::Info, 0, "new");
    open();
    QTemporaryDir directory;
    const QString path = directory.filePath("log.txt");
    const auto contents = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("old");
    }
    for (const bool replaced : {false, true}) {
        window->saveInto(path);
        auto* box = window->findChild<QMessageBox*>();
        QVERIFY(box != nullptr && QTest::qWaitForWindowActive(box));
        QVERIFY(box->text().contains(path));
        QCOMPARE(box->defaultButton()->text().remove('&'), QString("Cancel"));
        if (replaced) {
            for (QAbstractButton* each : box->buttons()) {
                if (each->text() == "&Replace") {
                    each->click();
                }
            }
        } else {
            QTest::keyClick(box, Qt::Key_Return);
        }
        QTRY_VERIFY(window->findChild<QMessageBox*>() == nullptr);
        QCOMPARE(contents() == "old", !replaced);
    }
    QVERIFY(contents().endsWith("  new\n"));
}

void LogWindowSaveTest::aMessageBoxShowsTheFileNameIfTheLogCannotBeSaved()
{
    open();
    const QString path = QStringLiteral("/missing-directory/log.txt");
    window->saveInto(path);
    auto* box = window->findChild<QMessageBox*>();
    QVERIFY(box != nullptr && QTest::qWaitForWindowActive(box));
    QVERIFY2(box->text().contains(path), qPrintable(box->text()));
    QTest::keyClick(box, Qt::Key_Return);
    QTRY_VERIFY(window->findChild<QMessageBox*>() == nullptr);
}

void LogWindowSaveTest::hidingTheWindowClosesItsDialogs()
{
    open();
    window->save();
    auto* dialog = window->findChild<QFileDialog*>();
    QVERIFY(dialog != nullptr && QTest::qWaitForWindowActive(dialog));
    window->hide();
    QTRY_VERIFY(window->findChild<QFileDialog*>() == nullptr);
}

QTEST_MAIN(LogWindowSaveTest)
#include "LogWindowSaveTest.moc"
