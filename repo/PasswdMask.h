// Hides the passwords in a text: each of their characters is replaced by one password character, so that
// places in the masked text and in the real one are the same.
//
// Graphical thread; a plain value. It keeps the text that it masked last, which is not looked at again.

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

    // What else is to be hidden: the first capture of each expression is a password. The expressions of
    // Repo::Vantor match nothing else than what is hidden already, and are not tried.
    void hideInWholeText(const QRegExp& expression); // if the whole text matches
    void hideEverywhere(const QRegExp& expression);  // in every match within the text

    QString masked(const QString& text, QChar passwordCharacter) const;
    // Whether what is inserted at this place becomes a part of a password.
    bool hides(const QString& text, int position) const;

private:
    // What the expressions say.
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
