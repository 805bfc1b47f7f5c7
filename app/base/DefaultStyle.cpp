// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/DefaultStyle.h"

#include <QApplication>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/base/Program.h"

DefaultStyle::DefaultStyle(int argc, char** argv) : userStyle(false)
{
    static const char option[] = "-style=";
    for (int i = 1; i < argc && !userStyle; ++i) {
        userStyle =
            std::strncmp(argv[i], option, sizeof option - 1) == 0 || std::strcmp(argv[i], "-style") == 0;
    }
    if (!userStyle) {
        QSettings settings(QSettings::UserScope, QStringLiteral("Trolltech"));
        // Only the user's own settings count, not the system-wide defaults.
        settings.setFallbacksEnabled(false);
        settings.beginGroup(QStringLiteral("Qt"));
        userStyle = settings.contains(QStringLiteral("style"));
    }
}

void DefaultStyle::set(QApplication&, QString style)
{
    if (userStyle) {
        return;
    }
    if (QStyle* made = QStyleFactory::create(style)) {
        QApplication::setStyle(made);
        QApplication::setPalette(made->standardPalette());
        return;
    }
    std::fprintf(stderr, "%s: unrecognized style: %s\n", program, qPrintable(style));
    std::fprintf(stderr, "%s: known styles:\n", program);
    const QStringList keys = QStyleFactory::keys();
    for (const QString& key : keys) {
        std::fprintf(stderr, "%s:    %s\n", program, qPrintable(key));
    }
    std::exit(1);
}
