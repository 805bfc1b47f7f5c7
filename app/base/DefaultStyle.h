// SPDX-License-Identifier: GPL-2.0-or-later

// Gives the program its own default widget style, unless the user has chosen one.
//
// Graphical thread. main() makes it before the application object, which removes Qt's own option -style from
// the arguments.

#ifndef APP_BASE_DEFAULTSTYLE_H
#define APP_BASE_DEFAULTSTYLE_H

#include <QString>

class QApplication;

class DefaultStyle
{
public:
    DefaultStyle(int argc, char** argv);

    // Applies the style and its standard palette, unless the user has chosen a style. If the style does not
    // exist, it prints a list of the existing ones and ends the process with status 1.
    void set(QApplication& app, QString style);

private:
    bool userStyle;
};

#endif
