// SPDX-License-Identifier: GPL-2.0-or-later

// Hides the passwords in a text. A password character replaces each character of a password. Therefore
// positions in the masked text and in the real text are the same.
//
// Only the graphical thread uses a PasswdMask, which can be copied. It caches the last masked text.

#ifndef REPO_PASSWDMASK_H
#define REPO_PASSWDMASK_H

#include <QList>
#include <QRegExp>
#include <QString>
#include <QVector>

#include "app/base/Credentials.h"

class PasswdMask
{
public:
    // Creates a mask that hides every password that Credentials finds in a text of this kind.
    explicit PasswdMask(Credentials::Text kind = Credentials::Text::Urls);

    // hideInWholeText() and hideEverywhere() add an expression whose first capture is also hidden. They
    // ignore the expressions of Repo::Vantor, because Credentials already finds the passwords in vantor URLs.
    // hideInWholeText() uses the expression only if it matches the whole text. hideEverywhere() uses each
    // match of the expression in the text.
    void hideInWholeText(const QRegExp& expression);
    void hideEverywhere(const QRegExp& expression);

    QString masked(const QString& text, QChar passwordCharacter) const;
    // Returns true if a text that is inserted at this position becomes a part of a password.
    bool hides(const QString& text, int position) const;

private:
    // Returns the places in the text that the expressions capture.
    QVector<Credentials::Place> captured(const QString& text) const;
    QString mask(const QString& text, QChar passwordCharacter) const;
    void forget();

    Credentials::Text kind;
    QList<QRegExp> wholeText;
    QList<QRegExp> everywhere;

    mutable QString lastText;
    mutable QChar lastCharacter;
    mutable QString lastMasked;
};

#endif
