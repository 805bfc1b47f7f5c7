// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/Fonts.h"

#include <QFontInfo>
#include <QStringList>

QFont Fonts::makeHeader(const QFont& font)
{
    QFont header(font);
    header.setFixedPitch(false);
    header.setStyleHint(QFont::Helvetica, QFont::PreferDefault);
    header.setWeight(QFont::Bold);
    // Only one of the two sizes is set: the size in pixels or the size in points. The other size is -1.
    if (header.pixelSize() != -1) {
        header.setPixelSize(header.pixelSize() * 3 / 2);
    } else if (header.pointSize() != -1) {
        header.setPointSize(header.pointSize() * 3 / 2);
    }
    return header;
}

QFont Fonts::makeFixed(const QFont& font)
{
    QFont fixed(font);
    fixed.setFixedPitch(true);
    const QStringList families = {tr("Bitstream Vera Sans Mono"), tr("DejaVu Sans Mono"), tr("Monospace"),
                                  tr("Courier")};
    for (const QString& family : families) {
        fixed.setFamily(family);
        if (QFontInfo(fixed).family() == family) {
            break;
        }
    }
    return fixed;
}

QFont Fonts::makeBold(const QFont& font)
{
    QFont bold(font);
    bold.setWeight(QFont::Bold);
    return bold;
}
