// Hides the passwords in a text: each of their characters is replaced by one password character, so that
// places in the masked text and in the real one are the same.
//
// A plain value; any thread.

#ifndef REPO_PASSWDMASK_H
#define REPO_PASSWDMASK_H

#include <QList>
#include <QRegExp>
#include <QString>
#include <QVector>

class PasswdMask
{
public:
    // Hides every password that a list of URLs may hold: those of the vantor scheme, and those before a host.
    static PasswdMask forUrls();

    // The first capture of each expression is a password.
    void hideInWholeText(QRegExp const& expression); // if the whole text matches
    void hideEverywhere(QRegExp const& expression);  // in every match within the text

    QString masked(const QString& text, QChar passwordCharacter) const;
    // Whether what is inserted at this place becomes a part of a password.
    bool hides(const QString& text, int position) const;

private:
    struct Range
    {
        int begin;
        int length;
    };

    QVector<Range> passwords(const QString& text) const;

    QList<QRegExp> wholeText;
    QList<QRegExp> everywhere;
};

#endif
