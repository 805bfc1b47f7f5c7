// SPDX-License-Identifier: GPL-2.0-or-later

// Creates variants of a font. With these functions, headings look the same in every window.
//
// Only the graphical thread calls these functions. They have no state.

#ifndef APP_BASE_FONTS_H
#define APP_BASE_FONTS_H

#include <QCoreApplication>
#include <QFont>

class Fonts
{
    Q_DECLARE_TR_FUNCTIONS(Fonts)

public:
    // Returns a font for headings: bold, similar to Helvetica, and one and a half times as large as `font`.
    static QFont makeHeader(const QFont& font);
    // Returns a font with a fixed pitch. Of several well-known families, uses the first one that this system
    // has.
    static QFont makeFixed(const QFont& font);
    // Returns a bold font that is otherwise unchanged.
    static QFont makeBold(const QFont& font);
};

#endif
