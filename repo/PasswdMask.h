// SPDX-License-Identifier: GPL-2.0-or-later

// Hides the passwords in a text. One password character replaces each of their characters, so positions are
// the same in the masked and in the real text.
//
// Graphical thread; a plain value. It caches the last masked text.

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
    // Hides every password that Credentials finds in a text of this kind.
    explicit PasswdMask(Credentials::Text kind = Credentials::Text::Urls);

    // Further texts to hide: the first capture of each expression is a password. The expressions of
    // Repo::Vantor match only passwords that Credentials also finds, so they are not tried.
    void hideInWholeText(const QRegExp& expression); // if the whole text matches
    void hideEverywhere(const QRegExp& expression);  // in every match within the text

    QString masked(const QString& text, QChar passwordCharacter) const;
    // True if text inserted at this position becomes a part of a password.
    bool hides(const QString& text, int position) const;

private:
    // The passwords that the expressions capture.
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
