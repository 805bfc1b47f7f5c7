// SPDX-License-Identifier: GPL-2.0-or-later

// Removes line breaks from a line edit, because its text becomes one line of a configuration file. Pasted
// text often ends with a line break.
//
// A OneLineValidator lives on the graphical thread; its Qt parent owns it.

#ifndef REPO_ONELINEVALIDATOR_H
#define REPO_ONELINEVALIDATOR_H

#include <QValidator>

class OneLineValidator : public QValidator
{
    Q_OBJECT

public:
    explicit OneLineValidator(QObject* parent = nullptr) : QValidator(parent) {}

    // Removes line breaks at the end of the text, and replaces other line breaks by blanks. A line break
    // before a blank or a tab is kept, because the text after it is then a continuation line in the
    // configuration file.
    static QString oneLine(QString text);

    // Corrects `input` with oneLine(), and always returns Acceptable.
    State validate(QString& input, int& position) const override;
};

#endif
