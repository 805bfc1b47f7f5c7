// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoVantor.h"

#include "app/base/Credentials.h"
#include "repo/RepoEntry.h"

namespace {

const QLatin1String schemeMark("/vantor?");
const QLatin1String pathMark("&path=");

QChar toHex(int value)
{
    if (value < 0 || value > 15) {
        return QLatin1Char('?');
    }
    return QLatin1Char("0123456789abcdef"[value]);
}

// Returns the value of a hexadecimal digit, or -1 for any other character.
int fromHex(QChar digit)
{
    const ushort code = digit.unicode();
    if (code >= '0' && code <= '9') {
        return code - '0';
    }
    if (code >= 'a' && code <= 'f') {
        return code - 'a' + 10;
    }
    if (code >= 'A' && code <= 'F') {
        return code - 'A' + 10;
    }
    return -1;
}

// Returns whether a character must be percent-encoded in a vantor URL. All white space must be encoded,
// because a URL ends at the first white space.
bool needsProtection(QChar character)
{
    static const QString special = QStringLiteral("$&+,/:;=?@ \"<>#%{}|\\^~[]");
    return special.contains(character) || (character.unicode() <= 0xff && character.isSpace());
}

QString httpProtect(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (needsProtection(character)) {
            const int code = character.unicode();
            result += QLatin1Char('%');
            result += toHex(code / 16);
            result += toHex(code % 16);
        } else {
            result += character;
        }
    }
    return result;
}

QString httpUnprotect(const QString& text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const bool mayBeEscape = text.at(i) == QLatin1Char('%') && i + 2 < text.size();
        const int high = mayBeEscape ? fromHex(text.at(i + 1)) : -1;
        const int low = mayBeEscape ? fromHex(text.at(i + 2)) : -1;
        if (high >= 0 && low >= 0) {
            result += QChar(16 * high + low);
            i += 2;
        } else {
            result += text.at(i);
        }
    }
    return result;
}

// Reads the text from `position` up to `mark` into `piece`, and moves `position` behind the mark. Returns
// false if the mark is missing.
bool readUntil(const QString& text, QLatin1String mark, int& position, QString& piece)
{
    const int end = text.indexOf(mark, position);
    if (end < 0) {
        return false;
    }
    piece = text.mid(position, end - position);
    position = end + mark.size();
    return true;
}

} // namespace

namespace Repo {
namespace Vantor {

bool getAuth(const QString& url, QString& nameKey, QString& name, QString& passwordKey, QString& password)
{
    int position = 0;
    QString before;
    const bool found = readUntil(url, schemeMark, position, before) &&
                       readUntil(url, QLatin1String("="), position, nameKey) &&
                       readUntil(url, QLatin1String("&"), position, name) &&
                       readUntil(url, QLatin1String("="), position, passwordKey) &&
                       readUntil(url, pathMark, position, password);
    for (QString* piece : {&nameKey, &name, &passwordKey, &password}) {
        *piece = found ? httpUnprotect(*piece) : QString();
    }
    return found;
}

bool getAuth(const Repo::Entry& entry, QString& nameKey, QString& name, QString& passwordKey,
             QString& password)
{
    return getAuth(entry.baseurl, nameKey, name, passwordKey, password) ||
           getAuth(entry.mirrorlist, nameKey, name, passwordKey, password);
}

QString replaceAuth(const QString& url, const QString& nameKey, const QString& name,
                    const QString& passwordKey, const QString& password)
{
    const QString replacement = schemeMark + httpProtect(nameKey) + QLatin1Char('=') + httpProtect(name) +
                                QLatin1Char('&') + httpProtect(passwordKey) + QLatin1Char('=') +
                                httpProtect(password) + pathMark;
    QString result;
    int kept = 0;
    const QVector<Credentials::Place> parts = Credentials::vantorParts(url);
    for (const Credentials::Place& part : parts) {
        result += url.midRef(kept, part.begin - kept) + replacement;
        kept = part.end();
    }
    return result + url.midRef(kept);
}

QString replaceAuth(const QString& url, const QString& name, const QString& password)
{
    QString nameKey;
    QString oldName;
    QString passwordKey;
    QString oldPassword;
    if (!getAuth(url, nameKey, oldName, passwordKey, oldPassword)) {
        return url;
    }
    return replaceAuth(url, nameKey, name, passwordKey, password);
}

QString replaceAuth(const QString& url, const QString& password)
{
    QString nameKey;
    QString name;
    QString passwordKey;
    QString oldPassword;
    if (!getAuth(url, nameKey, name, passwordKey, oldPassword)) {
        return url;
    }
    return replaceAuth(url, nameKey, name, passwordKey, password);
}

QRegExp oneUrlRegExp()
{
    return QRegExp(QStringLiteral("^.*/vantor\\?[^&\\s]*=[^&\\s]*&[^&\\s]*=([^&\\s]*)&path=.*$"));
}

QRegExp urlsRegExp()
{
    return QRegExp(QStringLiteral("/vantor\\?[^&\\s]*=[^&\\s]*&[^&\\s]*=([^&\\s]*)&path=[\\s]*\\b"));
}

} // namespace Vantor
} // namespace Repo
