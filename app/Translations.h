// SPDX-License-Identifier: GPL-2.0-or-later

// Loads the catalogue of the user's language, if VYRE has one.
//
// A catalogue is a file vyre_<language>.qm, made from translations/vyre_<language>.ts. The texts in the
// sources are English, so English needs no catalogue.
//
// main() calls it on the graphical thread before any text is made, because a text is translated only once,
// when it is made. The application object owns the loaded catalogues.

#ifndef APP_TRANSLATIONS_H
#define APP_TRANSLATIONS_H

#include <QStringList>

class QCoreApplication;

namespace Translations {

// The directories that are searched for catalogues: first the share directory, then a directory beside the
// program, for a program that is built but not installed.
QStringList directories();

// Loads the catalogue of the first language that has one, and the toolkit's own catalogue of that language.
// Languages are named like "de-DE" or "de", and the preferred one comes first. English ends the search.
// Returns the name of the file without its suffix; an empty text if the texts stay English.
QString install(QCoreApplication& app, const QStringList& languages);

// The same for the languages that the environment selects.
QString install(QCoreApplication& app);

} // namespace Translations

#endif
