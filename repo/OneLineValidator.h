// SPDX-License-Identifier: GPL-2.0-or-later

// Keeps line breaks out of a line edit whose text becomes one line of a configuration file. Pasted text often
// ends with a line break.
//
// Graphical thread; owned by its Qt parent.

#ifndef REPO_ONELINEVALIDATOR_H
#define REPO_ONELINEVALIDATOR_H

#include <QValidator>

class OneLineValidator : public QValidator
{
    Q_OBJECT

public:
    explicit OneLineValidator(QObject* parent = nullptr) : QValidator(parent) {}

    // Removes line breaks at the end and replaces all others by blanks. A line break before a blank or a tab
    // stays, because a configuration file can hold it.
    static QString oneLine(QString text);

    // Corrects the input, and accepts every input.
    State validate(QString& input, int& position) const override;
};

#endif
