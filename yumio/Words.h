// SPDX-License-Identifier: GPL-2.0-or-later

// The words for the actions, states and kinds of packages, each once. All code that shows, reads out or asks
// for such a value uses these words.
//
// For the graphical thread and workers; no state. A value outside its enumeration has no word: the text is
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
    // In one or two words, for columns that show a picture and for questions.
    static QString of(Package::Action action);
    static QString of(Package::State state);
    static QString of(Package::Kind kind);

    // In a few words, for the description of a package.
    static QString described(Package::State state);
    static QString described(Package::Kind kind);

    // The tool tip of a package. For a kind, use described().
    static QString explained(Package::Action action); // empty for no action
    static QString explained(Package::State state);
};

#endif
