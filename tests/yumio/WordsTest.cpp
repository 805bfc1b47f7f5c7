// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Words.h"

#include <QtTest>

namespace {

// The results of the function for all values of an enumeration, and for the two values just outside the
// enumeration.
template <typename Value> QStringList all(QString (*say)(Value), int last)
{
    QStringList texts;
    for (int value = -1; value <= last + 1; ++value) {
        texts << say(static_cast<Value>(value));
    }
    return texts;
}

} // namespace

class WordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachActionHasTheExpectedWord()
    {
        QCOMPARE(all<Package::Action>(&Words::of, Package::None),
                 (QStringList{"", "Update", "Install", "Remove", "No Action", ""}));
        QCOMPARE(all<Package::Action>(&Words::explained, Package::None),
                 (QStringList{"", "Update package", "Install package", "Remove package", "", ""}));
    }

    void eachStateHasTheExpectedWord()
    {
        QCOMPARE(all<Package::State>(&Words::of, Package::Installed),
                 (QStringList{"", "Out-of-date", "Not Installed", "Up-to-date", ""}));
        QCOMPARE(all<Package::State>(&Words::described, Package::Installed),
                 (QStringList{"", "Available for update", "Available for installation", "Installed", ""}));
        QCOMPARE(all<Package::State>(&Words::explained, Package::Installed),
                 (QStringList{"", "Package is available to update an out-of-date version",
                              "Package is available for installation", "Package is installed and up-to-date",
                              ""}));
    }

    void eachKindHasTheExpectedWord()
    {
        QCOMPARE(all<Package::Kind>(&Words::of, Package::Ordinary),
                 (QStringList{"", "Suite", "Group", "Package", ""}));
        QCOMPARE(all<Package::Kind>(&Words::described, Package::Ordinary),
                 (QStringList{"", "Suite of packages", "Group of packages", "Ordinary package", ""}));
    }
};

QTEST_MAIN(WordsTest)
#include "WordsTest.moc"
