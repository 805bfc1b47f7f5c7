// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Fields.h"

#include <QtTest>

namespace {

// The labels of the fields that have all these flags of Fields::Use, in the order of the fields. The Name
// field has no label; "the name" stands for it.
QStringList labels(int uses)
{
    QStringList found;
    Fields::forEachUntil(uses, [&found](Fields::Field field) {
        found << (field == Fields::Name ? QStringLiteral("the name") : Fields::label(field));
        return false;
    });
    return found;
}

} // namespace

class FieldsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDescriptionOfAPackageHasTheExpectedFieldsInOrder()
    {
        QCOMPARE(
            labels(Fields::OfPackages | Fields::Described).join("; "),
            QString("Kind; Version; Repository; Architecture; Size; Summary; Description; Group; Vendor; "
                    "Build Time; Build Host; Install Time; Binary RPM; Source RPM; License; Packager; "
                    "URL; Relocations; Provides; Requires (pre); Requires; Conflicts; Obsoletes; "
                    "Recommends; Suggests; Supplements; Enhances; Advisories; Module Streams; Version Lock; "
                    "Files; Change Log"));
    }

    void theShortDescriptionHasTheExpectedFieldsInOrder()
    {
        QCOMPARE(labels(Fields::OfPackages | Fields::InShortDescription).join("; "),
                 QString("Version; Architecture; Size; Build Time; Packager"));
        QCOMPARE(labels(Fields::OfGroups | Fields::InShortDescription), QStringList());
    }

    void theDescriptionOfAGroupHasTheExpectedFieldsInOrder()
    {
        QCOMPARE(
            labels(Fields::OfGroups | Fields::Described).join("; "),
            QString("Kind; Mandatory Packages; Default Packages; Optional Packages; Conditional Packages"));
    }

    // A search reads the name and the fields of the description. It reads file lists and change logs directly
    // from the metadata, not as fields.
    void theSearchReadsTheExpectedFieldsInOrder()
    {
        QStringList packages = labels(Fields::OfPackages | Fields::Described);
        QVERIFY(packages.removeOne("Kind") && packages.removeOne("Files") &&
                packages.removeOne("Change Log"));
        QCOMPARE(labels(Fields::OfPackages | Fields::Searched), QStringList("the name") + packages);
        QStringList groups = labels(Fields::OfGroups | Fields::Described);
        QVERIFY(groups.removeOne("Kind"));
        QCOMPARE(labels(Fields::OfGroups | Fields::Searched), QStringList("the name") + groups);
    }

    void theLoopOverTheFieldsStopsWhenTheCallbackReturnsTrue()
    {
        QList<Fields::Field> given;
        const auto until = [&given](Fields::Field last) {
            return [&given, last](Fields::Field field) {
                given << field;
                return field == last;
            };
        };
        QVERIFY(Fields::forEachUntil(Fields::OfPackages | Fields::Searched, until(Fields::Version)));
        QCOMPARE(given, (QList<Fields::Field>{Fields::Name, Fields::Version}));
        given.clear();
        QVERIFY(!Fields::forEachUntil(Fields::OfGroups | Fields::Described, until(Fields::Vendor)));
        QCOMPARE(given.count(), 5);
    }

    void eachRowOfTheFieldTableHasTheDataThatItsSourceNeeds()
    {
        using Source = Fields::Source;
        for (int i = 0; i < Fields::Count; ++i) {
            const Fields::Row& row = Fields::row(static_cast<Fields::Field>(i));
            QCOMPARE(int(row.field), i);
            const bool named = row.source == Source::Text || row.source == Source::Time ||
                               row.source == Source::Dependencies || row.source == Source::Header ||
                               row.source == Source::Members;
            QCOMPARE(row.attribute != nullptr, named);
            QCOMPARE(row.member != nullptr, row.source == Source::Record);
            QCOMPARE(row.label != nullptr, i != Fields::Name);
            QVERIFY((row.uses & (Fields::OfPackages | Fields::OfGroups)) != 0);
        }
    }
};

QTEST_MAIN(FieldsTest)
#include "FieldsTest.moc"
