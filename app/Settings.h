// SPDX-License-Identifier: GPL-2.0-or-later

// Saves the arrangement of the windows to the file vyre/vyre.ini in the user's configuration directory.
// The file contains nothing else; the user may delete it at any time.
//
// Functions on the graphical thread create a Settings object when they need one.

#ifndef APP_SETTINGS_H
#define APP_SETTINGS_H

#include <QSettings>

class Settings : public QSettings
{
public:
    Settings()
        : QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("vyre"),
                    QStringLiteral("vyre"))
    {
    }
};

#endif
