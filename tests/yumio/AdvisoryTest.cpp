// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Advisory.h"

#include <QtTest>

class AdvisoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAdvisoryIsInstalledOnlyIfAllItsPackagesAreInstalled()
    {
        Advisory advisory;
        advisory.packages.append({"tool", "noarch", "1:2-3", Advisory::IsInstalled, QString()});
        QVERIFY(advisory.isInstalled());
        for (int obstacle = Advisory::Possible; obstacle <= Advisory::Excluded; ++obstacle) {
            Advisory other = advisory;
            other.packages.append(
                {"lib", "x86_64", "1-1", static_cast<Advisory::Obstacle>(obstacle), QString()});
            QCOMPARE(other.isInstalled(), obstacle == Advisory::IsInstalled);
        }
    }

    void thePackageTextConsistsOfNameVersionAndArchitecture()
    {
        const Advisory::Package package{"tool", "noarch", "1:2-3", Advisory::Possible, QString()};
        QCOMPARE(package.text(), QString("tool-1:2-3.noarch"));
    }
};

QTEST_APPLESS_MAIN(AdvisoryTest)
#include "AdvisoryTest.moc"
