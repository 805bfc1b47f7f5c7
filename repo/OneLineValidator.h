// Keeps line breaks out of a line edit whose text becomes one line of a configuration file. Text that is
// pasted often has one at its end.
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

    // Removes line breaks at the end and makes blanks of the others. Those before a blank or a tab stay: a
    // configuration file can hold them.
    static QString oneLine(QString text);

    // Corrects the input; there is none that it does not accept.
    State validate(QString& input, int& position) const override;
};

#endif
