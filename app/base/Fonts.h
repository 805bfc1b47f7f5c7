// SPDX-License-Identifier: GPL-2.0-or-later

// Fonts derived from a given one, the same way in every window.
//
// Graphical thread; no state.

#ifndef APP_BASE_FONTS_H
#define APP_BASE_FONTS_H

#include <QCoreApplication>
#include <QFont>

class Fonts
{
    Q_DECLARE_TR_FUNCTIONS(Fonts)

public:
    // For headings: bold, Helvetica-like, and one and a half times as large.
    static QFont makeHeader(const QFont& font);
    // Fixed pitch, from the first well-known family that this system has.
    static QFont makeFixed(const QFont& font);
    // Bold, otherwise unchanged.
    static QFont makeBold(const QFont& font);
};

#endif
