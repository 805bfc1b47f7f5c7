// The words for the actions, states and kinds of packages, each once: whatever shows, reads out or asks for
// one takes it from here.
//
// Graphical thread or a worker; no state. A value that is none of its enumeration has no word: the text is
// empty.

#ifndef YUMIO_WORDS_H
#define YUMIO_WORDS_H

#include <QCoreApplication>
#include <QString>

#include "yumio/Package.h"

class Words
{
    Q_DECLARE_TR_FUNCTIONS(Words)

public:
    // In a word or two, for what shows a picture and for questions.
    static QString of(Package::Action action);
    static QString of(Package::State state);
    static QString of(Package::Kind kind);

    // In a few words, for the description of a package.
    static QString described(Package::State state);
    static QString described(Package::Kind kind);

    // What a tool tip says of a package; a kind's is its description.
    static QString explained(Package::Action action); // empty: nothing is to be done
    static QString explained(Package::State state);
};

#endif
