// SPDX-License-Identifier: GPL-2.0-or-later

// The words for the actions, states and kinds of packages: for tables, descriptions, questions and screen
// readers. Texts that are whole sentences, for example in menus, have words of their own.
//
// Any thread may call these functions, because the class has no state. For a value outside its enumeration,
// the text is empty.

#ifndef YUMIO_WORDS_H
#define YUMIO_WORDS_H

#include <QCoreApplication>
#include <QString>

#include "yumio/Package.h"

class Words
{
    Q_DECLARE_TR_FUNCTIONS(Words)

public:
    // One or two words, for questions. For a column that shows a picture, a screen reader reads these words.
    static QString of(Package::Action action);
    static QString of(Package::State state);
    static QString of(Package::Kind kind);

    // A few words, for the description of a package.
    static QString described(Package::State state);
    static QString described(Package::Kind kind);

    // Returns the text for the tool tip of an action or a state. The tool tip of a kind shows the text of
    // described().
    static QString explained(Package::Action action); // empty for no action
    static QString explained(Package::State state);
};

#endif
