// SPDX-License-Identifier: GPL-2.0-or-later

// Sets the program's default widget style, unless the user has chosen a style.
//
// Only the graphical thread uses a DefaultStyle. main() creates it before the application object, because the
// application object removes Qt's -style option from the arguments.

#ifndef APP_BASE_DEFAULTSTYLE_H
#define APP_BASE_DEFAULTSTYLE_H

#include <QString>

class QApplication;

class DefaultStyle
{
public:
    DefaultStyle(int argc, char** argv);

    // Applies the style and its standard palette, unless the user has chosen a style. If the style does not
    // exist, this function prints a list of the existing styles and ends the process with status 1.
    void set(QApplication& app, QString style);

private:
    bool userStyle;
};

#endif
