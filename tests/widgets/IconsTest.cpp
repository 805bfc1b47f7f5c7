// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Icons.h"

#include <QtTest>
#include <QtWidgets>

#include "app/base/Share.h"

namespace {

QImage picture(const QIcon& icon, int side, QIcon::Mode mode = QIcon::Normal)
{
    return icon.pixmap(QSize(side, side), mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class IconsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anIconOfTheUsualSizeShowsItsPictureUnscaled()
    {
        const QImage drawn(Share::absolute("icons/updateBox.png"));
        QCOMPARE(drawn.size(), QSize(16, 16));
        QCOMPARE(picture(Icons::shared("updateBox"), 16),
                 picture(QIcon(Share::absolute("icons/updateBox.png")), 16));
    }

    void iconsHaveTheRequestedSize()
    {
        const QStringList drawings = QDir(Share::absolute("icons")).entryList({"*.png"}, QDir::Files);
        QVERIFY(drawings.count() > 10);
        for (const QString& drawing : drawings) {
            const QString name = drawing.section('.', 0, 0);
            if (!drawing.contains('@')) {
                for (int side : {16, 24, 32, 48, 64}) {
                    QCOMPARE(picture(Icons::shared(name), side).size(), QSize(side, side));
                }
            }
        }
    }

    void selectedIconsAreNotTinted()
    {
        for (int side : {16, 32}) {
            QCOMPARE(picture(Icons::shared("removeBox"), side, QIcon::Selected),
                     picture(Icons::shared("removeBox"), side));
        }
        // A plain QIcon, in contrast, is tinted when it is selected.
        const QIcon plain(Share::absolute("icons/removeBox.png"));
        QVERIFY(picture(plain, 16, QIcon::Selected) != picture(plain, 16));
    }
};

QTEST_MAIN(IconsTest)
#include "IconsTest.moc"
