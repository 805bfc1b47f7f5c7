// Has the program speak the user's language, as far as there is a catalogue of it.
//
// A catalogue is a file vyre_<language>.qm, made from translations/vyre_<language>.ts. The texts in the
// sources are English, which needs none.
//
// Called by main() on the graphical thread, before any text is made: texts are translated when they are made
// and stay as they are. The application object owns what has been loaded.

#ifndef APP_TRANSLATIONS_H
#define APP_TRANSLATIONS_H

#include <QStringList>

class QCoreApplication;

namespace Translations {

// Where catalogues are looked for: in the share directory and, for a program that has been built and not been
// installed, beside the program.
QStringList directories();

// Loads the catalogue of the first of the languages that the program speaks, and with it the toolkit's own.
// The languages are named as in "de-DE" or "de", the most wanted one first; English ends the search. Returns
// the file without its suffix, an empty text when the program is to speak English.
QString install(QCoreApplication& app, const QStringList& languages);

// The same with the languages that the environment asks for.
QString install(QCoreApplication& app);

} // namespace Translations

#endif
