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
    // For headings: bold, Helvetica-like and half as large again.
    static QFont makeHeader(const QFont& font);
    // Fixed pitch, from the first of the well-known families that this system has.
    static QFont makeFixed(const QFont& font);
    // Bold, and nothing else changed.
    static QFont makeBold(const QFont& font);
};

#endif
