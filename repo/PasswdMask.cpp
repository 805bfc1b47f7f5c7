// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdMask.h"

#include <algorithm>

#include "repo/RepoVantor.h"

namespace {

bool isOfVantor(const QRegExp& expression)
{
    return expression == Repo::Vantor::oneUrlRegExp() || expression == Repo::Vantor::urlsRegExp();
}

} // namespace

PasswdMask::PasswdMask(Credentials::Text textKind) : kind(textKind) {}

void PasswdMask::hideInWholeText(const QRegExp& expression)
{
    if (!isOfVantor(expression)) {
        wholeText.append(expression);
        forget();
    }
}

void PasswdMask::hideEverywhere(const QRegExp& expression)
{
    if (!isOfVantor(expression)) {
        everywhere.append(expression);
        forget();
    }
}

void PasswdMask::forget()
{
    lastText.clear();
    lastMasked.clear();
}

QVector<Credentials::Place> PasswdMask::captured(const QString& text) const
{
    QVector<Credentials::Place> found;
    const auto take = [&found](const QRegExp& matched) {
        if (matched.pos(1) >= 0) {
            found.append({matched.pos(1), matched.cap(1).size()});
        }
    };
    for (const QRegExp& expression : wholeText) {
        if (expression.exactMatch(text)) {
            take(expression);
        }
    }
    for (const QRegExp& expression : everywhere) {
        int begin = 0;
        while ((begin = expression.indexIn(text, begin)) >= 0) {
            take(expression);
            begin += std::max(1, expression.matchedLength());
        }
    }
    return found;
}

QString PasswdMask::mask(const QString& text, QChar passwordCharacter) const
{
    QString result = text;
    const QVector<Credentials::Place> all = Credentials::places(text, kind) + captured(text);
    for (const Credentials::Place& password : all) {
        std::fill_n(result.begin() + password.begin, password.length, passwordCharacter);
    }
    return result;
}

QString PasswdMask::masked(const QString& text, QChar passwordCharacter) const
{
    if (text != lastText || passwordCharacter != lastCharacter) {
        lastMasked = mask(text, passwordCharacter);
        lastText = text;
        lastCharacter = passwordCharacter;
    }
    return lastMasked;
}

bool PasswdMask::hides(const QString& text, int position) const
{
    const QVector<Credentials::Place> known = Credentials::places(text, kind);
    if (std::any_of(known.begin(), known.end(), [position](const Credentials::Place& place) {
            return place.begin <= position && position <= place.end();
        })) {
        return true;
    }
    if (wholeText.isEmpty() && everywhere.isEmpty()) {
        return false;
    }
    // The expression for passwords does not match an empty password. Insert one character, and check whether
    // it is masked.
    const QChar inserted = QLatin1Char('x');
    const QChar character = QLatin1Char('*');
    return mask(QString(text).insert(position, inserted), character).at(position) == character;
}
