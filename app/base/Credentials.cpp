// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/Credentials.h"

#include <algorithm>

#include <QStringList>

namespace {

const QLatin1String vantorMark("/vantor");
const QLatin1String pathMark("&path=");
const QLatin1String hostMark("://");
const QLatin1String passwordMark("password");

// The range of a password (begin to end), and the larger part of the URL that removed() deletes.
struct Found
{
    int begin;
    int end;
    int partBegin;
    int partEnd;
};

// Finds the first character for which `wanted` returns true. Each search begins where the previous search
// ended, so the text is scanned only once.
template <typename Wanted> class Next
{
public:
    Next(const QString& whole, Wanted isWanted) : text(whole), wanted(isWanted) {}

    // Returns the position of the next wanted character from `begin` on, or the end of the text.
    int from(int begin)
    {
        position = std::max(position, begin);
        while (position < text.size() && !wanted(text.at(position))) {
            ++position;
        }
        return position;
    }

private:
    const QString& text;
    const Wanted wanted;
    int position = 0;
};

template <typename Wanted> Next<Wanted> makeNext(const QString& text, Wanted wanted)
{
    return Next<Wanted>(text, wanted);
}

bool isAmpersand(QChar character)
{
    return character == QLatin1Char('&');
}

bool isEqualsSign(QChar character)
{
    return character == QLatin1Char('=');
}

bool endsPath(QChar character)
{
    return character == QLatin1Char('?') || character.isSpace();
}

bool endsParameter(QChar character)
{
    return isAmpersand(character) || character.isSpace();
}

bool endsKey(QChar character)
{
    return isEqualsSign(character) || endsParameter(character);
}

bool endsHost(QChar character)
{
    return character == QLatin1Char('/') || character.isSpace();
}

bool isBlank(QChar character)
{
    return character == QLatin1Char(' ') || character == QLatin1Char('\t');
}

// Finds the passwords of vantor URLs, even if they contain white space. The rules are the same as in
// Repo::Vantor::getAuth().
void findVantor(const QString& text, QVector<Found>& found)
{
    auto nameEnd = makeNext(text, isEqualsSign);
    auto partEnd = makeNext(text, isAmpersand);
    auto keyEnd = makeNext(text, isEqualsSign);
    int path = 0;
    for (int mark = text.indexOf(vantorMark, 0, Qt::CaseInsensitive); mark >= 0;
         mark = text.indexOf(vantorMark, mark + 1, Qt::CaseInsensitive)) {
        const int query = mark + vantorMark.size();
        if (query >= text.size() || text.at(query) != QLatin1Char('?')) {
            continue;
        }
        const int begin = keyEnd.from(partEnd.from(nameEnd.from(query + 1) + 1) + 1) + 1;
        if (begin > path) {
            path = text.indexOf(pathMark, begin);
        }
        if (begin > text.size() || path < 0) {
            return;
        }
        found.append({begin, path, query + 1, path + 1});
    }
}

// Finds the passwords of vantor URLs that have a path before the query. When a program downloads a file, it
// inserts the path of the file before the query. In messages, a blank may end such a URL.
void findVantorWithPath(const QString& text, QVector<Found>& found)
{
    auto pathEnd = makeNext(text, endsPath);
    auto nameEnd = makeNext(text, endsParameter);
    auto keyEnd = makeNext(text, endsKey);
    auto passwordEnd = makeNext(text, endsParameter);
    const auto hasAt = [&text](int position, char wanted) {
        return position < text.size() && text.at(position) == QLatin1Char(wanted);
    };
    for (int mark = text.indexOf(vantorMark, 0, Qt::CaseInsensitive); mark >= 0;
         mark = text.indexOf(vantorMark, mark + 1, Qt::CaseInsensitive)) {
        const int query = pathEnd.from(mark + vantorMark.size());
        if (!hasAt(query, '?')) {
            continue;
        }
        const int name = nameEnd.from(query + 1);
        if (!hasAt(name, '&')) {
            continue;
        }
        const int key = keyEnd.from(name + 1);
        if (!hasAt(key, '=')) {
            continue;
        }
        const int end = passwordEnd.from(key + 1);
        if (text.midRef(end, pathMark.size()) == pathMark) {
            found.append({key + 1, end, query + 1, end + 1});
        }
    }
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

// Returns whether the text after the first colon behind "://" may belong to the host. This text may be a
// port, a variable that contains a port, or a part of an IPv6 address in brackets.
bool mayBePort(const QString& text, int host, int colon, int end)
{
    return text.at(host) == QLatin1Char('[') || colon + 1 == end || text.at(colon + 1) == QLatin1Char('$') ||
           std::all_of(text.begin() + colon + 1, text.begin() + end, isDigit);
}

// Finds the user names and passwords before hosts, as in "://NAME:PASSWORD@HOST". A password may contain a
// slash, although %2f would be correct. Therefore text between a colon and a slash is a part of a password if
// it cannot be a port.
void findBeforeHost(const QString& text, QVector<Found>& found)
{
    auto hostEnd = makeNext(text, endsHost);
    int wordEnd = 0;
    int lastInWord = -1;
    for (int mark = text.indexOf(hostMark); mark >= 0; mark = text.indexOf(hostMark, mark + 1)) {
        const int begin = mark + hostMark.size();
        const int end = hostEnd.from(begin);
        int colon = -1;
        int queryBegin = end;
        int lastAt = -1;
        int lastBeforeQuery = -1;
        for (int i = begin; i < end; ++i) {
            const QChar character = text.at(i);
            if (character == QLatin1Char(':') && colon < 0) {
                colon = i;
            } else if (character == QLatin1Char('@')) {
                lastAt = i;
                lastBeforeQuery = queryBegin == end ? i : lastBeforeQuery;
            } else if (character == QLatin1Char('?') || character == QLatin1Char('#')) {
                queryBegin = std::min(queryBegin, i);
            }
        }
        const bool hasPort = colon < 0 || colon >= queryBegin || mayBePort(text, begin, colon, queryBegin);
        if (lastAt < 0 && !hasPort) {
            if (begin >= wordEnd) {
                for (wordEnd = end; wordEnd < text.size() && !text.at(wordEnd).isSpace(); ++wordEnd) {
                    lastInWord = text.at(wordEnd) == QLatin1Char('@') ? wordEnd : lastInWord;
                }
            }
            lastAt = lastInWord;
        }
        if (lastAt < begin) {
            continue;
        }
        const bool hasPassword = colon >= 0 && colon < lastAt;
        // An "@" in the query does not end a user name and password, so removed() keeps the text before this
        // "@". hidden() hides this text nevertheless, because it may be secret.
        const int partEnd = lastBeforeQuery >= 0 ? lastBeforeQuery + 1 : hasPort ? begin : lastAt + 1;
        found.append({hasPassword ? colon + 1 : begin, hasPassword ? lastAt : -1, begin, partEnd});
    }
}

void findParameters(const QString& text, QVector<Found>& found)
{
    auto valueEnd = makeNext(text, endsParameter);
    for (int mark = text.indexOf(passwordMark, 0, Qt::CaseInsensitive); mark >= 0;
         mark = text.indexOf(passwordMark, mark + 1, Qt::CaseInsensitive)) {
        const int begin = mark + passwordMark.size() + 1;
        if (begin <= text.size() && text.at(begin - 1) == QLatin1Char('=')) {
            const int end = valueEnd.from(begin);
            found.append({begin, end, begin, end});
        }
    }
}

// Returns the end of an option's value: the end of its line, or of its last continuation line.
int endOfValue(const QString& text, int position)
{
    for (;;) {
        const int end = text.indexOf(QLatin1Char('\n'), position);
        if (end < 0) {
            return text.size();
        }
        if (end + 1 >= text.size() || !isBlank(text.at(end + 1))) {
            return end;
        }
        position = end + 1;
    }
}

void findOptions(const QString& text, QVector<Found>& found)
{
    int mark = text.indexOf(passwordMark, 0, Qt::CaseInsensitive);
    while (mark >= 0) {
        int position = mark + passwordMark.size();
        const auto skipBlanks = [&text, &position]() {
            while (position < text.size() && isBlank(text.at(position))) {
                ++position;
            }
        };
        skipBlanks();
        if (position < text.size() &&
            (text.at(position) == QLatin1Char(':') || text.at(position) == QLatin1Char('='))) {
            ++position;
            skipBlanks();
            const int end = endOfValue(text, position);
            found.append({position, end, position, end});
            position = end;
        }
        mark = text.indexOf(passwordMark, position, Qt::CaseInsensitive);
    }
}

QVector<Found> find(const QString& text, Credentials::Text kind)
{
    QVector<Found> found;
    findVantor(text, found);
    findVantorWithPath(text, found);
    findBeforeHost(text, found);
    findParameters(text, found);
    if (kind == Credentials::Text::Options) {
        findOptions(text, found);
    }
    return found;
}

QVector<Credentials::Place> united(QVector<Credentials::Place> given)
{
    std::sort(given.begin(), given.end(),
              [](const Credentials::Place& left, const Credentials::Place& right) {
                  return left.begin < right.begin;
              });
    QVector<Credentials::Place> result;
    for (const Credentials::Place& place : qAsConst(given)) {
        if (!result.isEmpty() && place.begin <= result.last().end()) {
            result.last().length = std::max(result.last().end(), place.end()) - result.last().begin;
        } else {
            result.append(place);
        }
    }
    return result;
}

// Appends the place of each line of a password. The indentation of continuation lines does not belong to the
// password.
void appendLines(const QString& text, const Credentials::Place& place, QVector<Credentials::Place>& lines)
{
    int begin = place.begin;
    while (begin <= place.end()) {
        const int end = static_cast<int>(
            std::find(text.begin() + begin, text.begin() + place.end(), QLatin1Char('\n')) - text.begin());
        if (begin > place.begin) {
            while (begin < end && isBlank(text.at(begin))) {
                ++begin;
            }
        }
        // Skip empty lines, except the first: an empty password needs a place of length 0.
        if (begin < end || place.length == 0 || end == place.begin) {
            lines.append({begin, end - begin});
        }
        begin = end + 1;
    }
}

} // namespace

QVector<Credentials::Place> Credentials::places(const QString& text, Text kind)
{
    QVector<Place> all;
    const QVector<Found> found = find(text, kind);
    for (const Found& each : found) {
        if (each.end >= each.begin) {
            all.append({each.begin, each.end - each.begin});
        }
    }
    QVector<Place> lines;
    const QVector<Place> wholes = united(all);
    for (const Place& whole : wholes) {
        appendLines(text, whole, lines);
    }
    return lines;
}

bool Credentials::holds(const QString& text, Text kind)
{
    return !places(text, kind).isEmpty();
}

bool Credentials::holdsPassword(const QString& text, Text kind)
{
    const QVector<Place> all = places(text, kind);
    return std::any_of(all.begin(), all.end(), [](const Place& place) { return place.length > 0; });
}

QString Credentials::hidden(const QString& message, Text kind)
{
    static const QString dots(3, QChar(0x25cf));
    QStringList lines = message.split(QLatin1Char('\n'));
    for (QString& line : lines) {
        const QVector<Place> found = places(line, kind);
        if (found.isEmpty()) {
            continue;
        }
        QString result;
        int shown = 0;
        for (const Place& place : found) {
            if (place.length > 0) {
                result += line.midRef(shown, place.begin - shown) + dots;
                shown = place.end();
            }
        }
        line = result + line.midRef(shown);
    }
    return lines.join(QLatin1Char('\n'));
}

QVector<Credentials::Place> Credentials::vantorParts(const QString& text)
{
    QVector<Place> parts;
    auto nameEnd = makeNext(text, endsParameter);
    auto nameKeyEnd = makeNext(text, isEqualsSign);
    auto passwordEnd = makeNext(text, endsParameter);
    auto passwordKeyEnd = makeNext(text, isEqualsSign);
    const QLatin1String wholeMark("/vantor?");
    int mark = text.indexOf(wholeMark);
    while (mark >= 0) {
        const int begin = mark;
        const int query = mark + wholeMark.size();
        mark = text.indexOf(wholeMark, mark + 1);
        const int name = nameEnd.from(query);
        if (nameKeyEnd.from(query) >= name || name == text.size() || !isAmpersand(text.at(name))) {
            continue;
        }
        const int end = passwordEnd.from(name + 1);
        if (passwordKeyEnd.from(name + 1) < end && text.midRef(end, pathMark.size()) == pathMark) {
            parts.append({begin, end + pathMark.size() - begin});
            mark = text.indexOf(wholeMark, parts.last().end());
        }
    }
    return parts;
}

QString Credentials::removed(const QString& url)
{
    QVector<Place> parts;
    const QVector<Found> found = find(url, Text::Urls);
    for (const Found& each : found) {
        parts.append({each.partBegin, each.partEnd - each.partBegin});
    }
    QString result;
    int kept = 0;
    const QVector<Place> wholes = united(parts);
    for (const Place& part : wholes) {
        result += url.midRef(kept, part.begin - kept);
        kept = part.end();
    }
    return result + url.midRef(kept);
}
