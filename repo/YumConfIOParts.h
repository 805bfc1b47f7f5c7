// SPDX-License-Identifier: GPL-2.0-or-later

// Helper functions for YumConfIO. Only the sources of YumConfIO include this file.
//
// Only the graphical thread calls these functions.

#ifndef REPO_YUMCONFIOPARTS_H
#define REPO_YUMCONFIOPARTS_H

#include <QList>
#include <QString>
#include <QStringList>

#include "repo/RepoEntry.h"
#include "widgets/HMessageBox.h"

namespace YumConfIOParts {

inline QStringList identifiersOf(const QList<Repo::Entry>& sections)
{
    QStringList result;
    for (const Repo::Entry& section : sections) {
        result.append(section.id);
    }
    result.sort();
    return result;
}

inline QString directoryOf(const QString& path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QStringLiteral(".") : slash == 0 ? QStringLiteral("/") : path.left(slash);
}

// Shows a message box. The text may come from a file, so the box never shows it as rich text.
inline QMessageBox::StandardButton showBox(QWidget* parent, const QString& title, const QString& text,
                                           QMessageBox::StandardButtons buttons,
                                           QMessageBox::StandardButton preferred,
                                           QMessageBox::Icon icon = QMessageBox::Critical)
{
    HMessageBox box(icon, title, text, buttons, parent);
    box.setDefaultButton(preferred);
    box.setEscapeButton(preferred);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace YumConfIOParts

#endif
