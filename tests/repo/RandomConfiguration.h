// SPDX-License-Identifier: GPL-2.0-or-later

// Makes random configurations from a seed, together with the expected values of each section. The class
// shares no code with the reader and the writer that it tests.

#ifndef TESTS_REPO_RANDOMCONFIGURATION_H
#define TESTS_REPO_RANDOMCONFIGURATION_H

#include <QByteArray>
#include <QList>
#include <QRandomGenerator>
#include <QString>

// A section of a configuration file, with the values that VYRE must read from it.
struct Section
{
    QString id;
    QString name;
    QString baseurl;
    QString mirrorlist;
    int enabled = 1;
    int gpgcheck = 1;
    QString options;

    // The text that VYRE must write for this section.
    QString text() const;
};

// The text that VYRE reads after it has written this text: VYRE writes UTF-8, but reads Latin-1.
QString readBack(const QString& text);
Section readBack(const Section& section);

class RandomConfiguration
{
public:
    // If `ascii` is true, the files contain no bytes above 0x7F.
    RandomConfiguration(quint32 seed, bool ascii) : random(seed), onlyAscii(ascii) {}

    // The lines of the main configuration file above its first repository section.
    QByteArray mainPart();
    // The text of a repository file, with comments above the first section. Appends the sections to the list.
    QByteArray repoFile(QList<Section>& list);
    // The repository sections of the main configuration file. No comments are above the first section,
    // because they would belong to the main part.
    QByteArray sections(QList<Section>& list);
    // Fills the section with random values, and returns its source text.
    QByteArray section(Section& made);

    // A value that a user could type: it has no line feeds, and does not begin with a blank.
    QString typed();
    // A line with an option that VYRE does not know, and its line feed.
    QString optionLine();

    // A number from 0 to limit - 1.
    int below(int limit) { return int(random.bounded(limit)); }
    bool chance(int percent) { return below(100) < percent; }

private:
    QByteArray blanks();
    QByteArray word();
    QByteArray value();
    QByteArray blankLine();
    QByteArray otherLine();
    QByteArray knownLine(Section& made);

    QRandomGenerator random;
    bool onlyAscii;
    int count = 0;
};

#endif
