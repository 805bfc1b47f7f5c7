// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Translations.h"

#include <QTranslator>
#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/MainWindow.h"
#include "app/base/Share.h"
#include "tests/support/EnvironmentVariable.h"

class TranslationsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> share;
    EnvironmentVariable shareDirectory{"VYRESHARE"};

    // Copies a built catalogue to the share directory, under a given name.
    void provide(const QString& name, const QString& of)
    {
        const QString folder = share->filePath("translations");
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::copy(QStringLiteral(VYRE_CATALOGUES "/") + of, folder + '/' + name));
    }
    static QString quit() { return MainWindow::tr("&Quit"); }
    static QString yes() { return QCoreApplication::translate("QPlatformTheme", "&Yes"); }

private Q_SLOTS:
    void init()
    {
        share = std::make_unique<QTemporaryDir>();
        QVERIFY(share->isValid());
        shareDirectory.set(QFile::encodeName(share->path()));
        QCOMPARE(quit(), QStringLiteral("&Quit"));
    }

    void cleanup()
    {
        // Remove the translators. Otherwise the application object would use them in the next test.
        for (QTranslator* translator : qApp->findChildren<QTranslator*>()) {
            delete translator;
        }
    }

    void theProgramUsesTheFirstRequestedLanguageThatHasACatalogue_data()
    {
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("file");
        QTest::newRow("language alone") << QStringList{"de"} << "vyre_de";
        QTest::newRow("language and country") << QStringList{"de-AT"} << "vyre_de";
        QTest::newRow("language, script and country")
            << QStringList{"de-Latn-DE", "de-DE", "de"} << "vyre_de";
        QTest::newRow("after two languages without a catalogue")
            << QStringList{"xx-XX", "fr-FR", "de-DE"} << "vyre_de";
        QTest::newRow("before English") << QStringList{"de", "en"} << "vyre_de";
        QTest::newRow("after English") << QStringList{"en-GB", "de"} << QString();
        // Qt lists "C" after a language that it does not know.
        QTest::newRow("after an unknown language") << QStringList{"xx", "C", "de"} << "vyre_de";
        QTest::newRow("only the C locale") << QStringList{"C"} << QString();
        QTest::newRow("language without a catalogue") << QStringList{"fr-FR", "fr"} << QString();
        QTest::newRow("empty list") << QStringList() << QString();
        QTest::newRow("empty language") << QStringList{""} << QString();
    }

    void theProgramUsesTheFirstRequestedLanguageThatHasACatalogue()
    {
        QFETCH(QStringList, languages);
        QFETCH(QString, file);
        provide("vyre_de.qm", "vyre_de.qm");
        QCOMPARE(Translations::install(*qApp, languages), file);
        QCOMPARE(quit(), file.isEmpty() ? QStringLiteral("&Quit") : QStringLiteral("&Beenden"));
    }

    void theTextsOfQtAreInTheLanguageOfTheProgram()
    {
        provide("vyre_de.qm", "vyre_de.qm");
        QCOMPARE(Translations::install(*qApp, {"fr-FR", "de-DE"}), QStringLiteral("vyre_de"));
        QCOMPARE(yes(), QStringLiteral("&Ja"));
    }

    void theTextsOfQtAreGermanEvenIfTheCatalogueOfQtIsMissing()
    {
        provide("vyre_de.qm", "vyre_de.qm");
        QCOMPARE(Translations::install(*qApp, {"de-DE"}), QStringLiteral("vyre_de"));
        const QList<QTranslator*> translators = qApp->findChildren<QTranslator*>();
        QCOMPARE(translators.size(), 2);
        delete translators.last();

        QDialogButtonBox box;
        QStringList texts;
        for (uint button = QDialogButtonBox::FirstButton; button <= QDialogButtonBox::LastButton;
             button <<= 1U) {
            texts << box.addButton(static_cast<QDialogButtonBox::StandardButton>(button))->text();
        }
        QCOMPARE(texts, (QStringList{"OK", "Speichern", "Alle speichern", "Öffnen", "&Ja", "Ja, &alle",
                                     "&Nein", "Nein, &keine", "Abbrechen", "Wiederholen", "Ignorieren",
                                     "Schließen", "Abbrechen", "Verwerfen", "Hilfe", "Anwenden",
                                     "Zurücksetzen", "Vorgaben wiederherstellen"}));
        QCOMPARE(QDialogButtonBox::tr("OK"), QString("OK"));

        QLineEdit line;
        QTextEdit edit;
        const auto menuOf = [](QMenu* menu) {
            const std::unique_ptr<QMenu> owned(menu);
            QStringList found;
            for (const QAction* action : owned->actions()) {
                if (!action->isSeparator()) {
                    found << action->text().section('\t', 0, 0);
                }
            }
            return found;
        };
        const QStringList entries{"&Rückgängig", "&Wiederholen", "&Ausschneiden",  "&Kopieren",
                                  "&Einfügen",   "Löschen",      "Alles auswählen"};
        QCOMPARE(menuOf(line.createStandardContextMenu()), entries);
        QCOMPARE(menuOf(edit.createStandardContextMenu()), entries);
    }

    void theTextsOfQtAreEnglishIfTheProgramIsEnglish()
    {
        QCOMPARE(Translations::install(*qApp, {"fr-FR"}), QString());
        QCOMPARE(yes(), QStringLiteral("&Yes"));
        QVERIFY(qApp->findChildren<QTranslator*>().isEmpty());
    }

    void aCatalogueForLanguageAndCountryIsPreferredToACatalogueForTheLanguage()
    {
        provide("vyre_de.qm", "vyre_de.qm");
        provide("vyre_de_AT.qm", "vyre_de.qm");
        QCOMPARE(Translations::install(*qApp, {"de-AT"}), QStringLiteral("vyre_de_AT"));
    }

    void aCatalogueWhoseNameHasNoLanguageIsIgnored()
    {
        provide("vyre.qm", "vyre_de.qm");
        provide("vyre", "vyre_de.qm");
        QCOMPARE(Translations::install(*qApp, {"fr-FR"}), QString());
        QCOMPARE(quit(), QStringLiteral("&Quit"));
    }

    void anInvalidCatalogueIsIgnored()
    {
        QVERIFY(QDir().mkpath(share->filePath("translations")));
        QFile broken(share->filePath("translations/vyre_de.qm"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        QVERIFY(broken.write("no catalogue") > 0);
        broken.close();
        QCOMPARE(Translations::install(*qApp, {"de-DE"}), QString());
        QCOMPARE(quit(), QStringLiteral("&Quit"));
    }

    void cataloguesAreFoundInTheShareDirectoryAndNextToTheProgram()
    {
        const QString beside = QCoreApplication::applicationDirPath() + "/translations";
        QCOMPARE(Translations::directories(), (QStringList{share->path() + "/translations", beside}));
        QVERIFY(!QFileInfo::exists(beside));
        QCOMPARE(Translations::install(*qApp, {"de"}), QString());
        QVERIFY(QFile::link(QStringLiteral(VYRE_CATALOGUES), beside));
        const QString loaded = Translations::install(*qApp, {"de"});
        QVERIFY(QFile::remove(beside));
        QCOMPARE(loaded, QStringLiteral("vyre_de"));
        QCOMPARE(quit(), QStringLiteral("&Beenden"));
    }
};

QTEST_MAIN(TranslationsTest)
#include "TranslationsTest.moc"
