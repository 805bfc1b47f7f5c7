// What the program remembers of how the user has arranged its windows, from one run to the next: the file
// vyre/vyre.ini in the user's configuration directory. Nothing else depends on it; it may be deleted at any
// time.
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
