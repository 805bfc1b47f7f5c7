// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/repo/RandomConfiguration.h"

#include <QRegularExpression>

#include <iterator>

QString Section::text() const
{
    QString result = QStringLiteral("[%1]\n").arg(id);
    if (!name.isEmpty()) {
        result += QStringLiteral("name=") + name + QLatin1Char('\n');
    }
    if (!baseurl.isEmpty()) {
        result += QStringLiteral("baseurl=") +
                  baseurl.split(QLatin1Char('\n')).join(QStringLiteral("\n        ")) + QLatin1Char('\n');
    }
    if (!mirrorlist.isEmpty()) {
        result += QStringLiteral("mirrorlist=") + mirrorlist + QLatin1Char('\n');
    }
    if (enabled != 1) {
        result += enabled == 0 ? QStringLiteral("enabled=0\n") : QStringLiteral("enabled=1\n");
    }
    if (gpgcheck != 1) {
        result += gpgcheck == 0 ? QStringLiteral("gpgcheck=0\n") : QStringLiteral("gpgcheck=1\n");
    }
    return result + options;
}

QString readBack(const QString& text)
{
    return QString::fromLatin1(text.toUtf8());
}

Section readBack(const Section& section)
{
    Section result = section;
    for (QString Section::*field :
         {&Section::id, &Section::name, &Section::baseurl, &Section::mirrorlist, &Section::options}) {
        result.*field = readBack(result.*field);
    }
    return result;
}

QByteArray RandomConfiguration::mainPart()
{
    QByteArray result;
    if (chance(90)) {
        result += "[main]\n";
    }
    for (int i = below(5); i > 0; --i) {
        result += chance(30) ? blankLine() : otherLine();
    }
    return result;
}

QByteArray RandomConfiguration::repoFile(QList<Section>& list)
{
    QByteArray result;
    while (chance(20)) {
        result += chance(50) ? QByteArray("  # indented\n") : otherLine();
    }
    return result + sections(list);
}

QByteArray RandomConfiguration::sections(QList<Section>& list)
{
    QByteArray result;
    for (int i = below(4); i > 0; --i) {
        list.append(Section());
        result += section(list.last());
    }
    if (chance(20) && result.endsWith('\n')) {
        result.chop(1);
    }
    return result;
}

QByteArray RandomConfiguration::section(Section& made)
{
    static const char* const shapes[] = {"repo%1",   " repo %1 ", "[repo]%1", "repo=%1",
                                         "#repo:%1", "%1\n more", "%1\n [",   "d\xC3\xA9%1"};
    const int shape = below(int(std::size(shapes)) - (onlyAscii ? 1 : 0));
    const QByteArray id = QByteArray(shapes[shape]).replace("%1", QByteArray::number(++count));
    QByteArray result = "[" + id + "]\n";
    made = Section();
    made.id = QString::fromLatin1(id);
    for (int i = below(8); i > 0; --i) {
        if (chance(50)) {
            result += knownLine(made);
        } else {
            const QByteArray line = chance(25) ? blankLine() : otherLine();
            result += line;
            if (line != "\n") {
                made.options += QString::fromLatin1(line);
            }
        }
    }
    return result;
}

QString RandomConfiguration::typed()
{
    QByteArray result = word();
    while (chance(40)) {
        result += blanks() + word();
    }
    return QString::fromLatin1(result);
}

QString RandomConfiguration::optionLine()
{
    return QString::fromLatin1(otherLine());
}

QByteArray RandomConfiguration::blanks()
{
    static const char* const kinds[] = {"", "", "", " ", "\t", "  \t "};
    return kinds[below(int(std::size(kinds)))];
}

QByteArray RandomConfiguration::word()
{
    static const char letters[] = "abcXYZ019-_./:=#;%@?&[]\r\xE9\xC3\xA9";
    const int usable = int(sizeof letters) - 1 - (onlyAscii ? 3 : 0);
    QByteArray result;
    for (int i = 1 + below(8); i > 0; --i) {
        result += letters[below(usable)];
    }
    if (result.endsWith('\r')) {
        // If a value ended in a carriage return, the reader would take this character for a part of the line
        // end.
        result += 'x';
    }
    return result;
}

QByteArray RandomConfiguration::value()
{
    QByteArray result;
    for (int i = below(4); i > 0; --i) {
        result += blanks() + word();
    }
    result += blanks();
    while (chance(15)) {
        result += "\n" + QByteArray(chance(50) ? " " : "\t") + blanks() + word() + blanks();
    }
    return result;
}

QByteArray RandomConfiguration::blankLine()
{
    return chance(10) ? QByteArray("\n  continued nothing\n") : QByteArray("\n");
}

QByteArray RandomConfiguration::otherLine()
{
    static const char* const keys[] = {"exclude", "gpgkey",   "#baseurl", "# comment", ";name",
                                       "Enabled", "enabled2", "nam",      "name.x",    "x y",
                                       "]",       "#[x]",     "=name",    ":",         "mirrorlist_"};
    static const char* const separators[] = {"=", ":", " = ", "\t: ", " :=", "=:"};
    const QByteArray key = keys[below(int(std::size(keys)))];
    return key + separators[below(int(std::size(separators)))] + value() + "\n";
}

QByteArray RandomConfiguration::knownLine(Section& made)
{
    static const char* const keys[] = {"name", "baseurl", "mirrorlist", "enabled", "gpgcheck"};
    static const char* const flags[] = {"0", "1", "0 ", "no", ""};
    const int key = below(int(std::size(keys)));
    QByteArray line = keys[key] + blanks() + (chance(70) ? "=" : ":") + blanks();
    if (key >= 3) {
        const int flag = below(int(std::size(flags)));
        (key == 3 ? made.enabled : made.gpgcheck) = flag == 0 ? 0 : 2;
        return line + flags[flag] + "\n";
    }
    const QByteArray given = value();
    static const QRegularExpression leadingBlanks(QStringLiteral("^[ \\t]+"));
    static const QRegularExpression allBlanks(QStringLiteral("[ \\t\\n]+"));
    QString expected = QString::fromLatin1(given).remove(leadingBlanks);
    switch (key) {
    case 0:
        made.name = expected;
        break;
    case 1:
        made.baseurl = expected.replace(allBlanks, QStringLiteral("\n"));
        break;
    default:
        made.mirrorlist = expected;
        break;
    }
    return line + given + "\n";
}
