// SPDX-License-Identifier: GPL-2.0-or-later

// Loads the catalogue of the user's language, if VYRE has one.
//
// A catalogue is a file vyre_<language>.qm, which the build creates from translations/vyre_<language>.ts. The
// texts in the sources are English, so English needs no catalogue.
//
// main() calls install() on the graphical thread before any text is created, because a text is translated
// only when it is created. The application object owns the loaded catalogues.

#ifndef APP_TRANSLATIONS_H
#define APP_TRANSLATIONS_H

#include <QStringList>

class QCoreApplication;

namespace Translations {

// Returns the directories that are searched for catalogues. The first is in the share directory. The second
// is in the directory of the program, for a program that is built but not installed.
QStringList directories();

// Loads the catalogue of the first language that has a catalogue, and Qt's own catalogue of that language. A
// language has a name such as "de-DE" or "de". The preferred language comes first. If the search reaches
// English, it ends, because English needs no catalogue. Returns the name of VYRE's catalogue file without its
// suffix, or an empty string if the texts stay English.
QString install(QCoreApplication& app, const QStringList& languages);

// Calls install(app, languages) with the languages that the environment selects.
QString install(QCoreApplication& app);

} // namespace Translations

#endif
