// SPDX-License-Identifier: GPL-2.0-or-later

// The arrangement of the windows, kept from one run to the next in the file vyre/vyre.ini in the user's
// configuration directory. Nothing else depends on this file; the user may delete it at any time.
//
// Made where it is needed; graphical thread.

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
