// Gives the program its own default widget style, unless the user has chosen one.
//
// Graphical thread; made by main() before the application object, so that it sees Qt's own -style option,
// which the application object takes away.

#ifndef APP_BASE_DEFAULTSTYLE_H
#define APP_BASE_DEFAULTSTYLE_H

#include <QString>

class QApplication;

class DefaultStyle
{
public:
    DefaultStyle(int argc, char** argv);

    // Applies the style and its standard palette, unless the user chose one. A style that does not exist ends
    // the process with status 1, after a list of those that do.
    void set(QApplication& app, QString style);

private:
    bool userStyle;
};

#endif
