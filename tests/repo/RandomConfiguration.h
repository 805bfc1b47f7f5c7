// SPDX-License-Identifier: GPL-2.0-or-later

// Makes random configurations from a seed, together with the expected values of each section. It shares no
// code with the reader and the writer.

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

    // The expected text after writing.
    QString text() const;
};

// The text that VYRE reads back after it has written this text: VYRE writes UTF-8, but reads Latin-1.
QString readBack(const QString& text);
Section readBack(const Section& section);

class RandomConfiguration
{
public:
    // If `ascii` is true, no byte is above 0x7F.
    RandomConfiguration(quint32 seed, bool ascii) : random(seed), onlyAscii(ascii) {}

    // The main file's lines above its first section.
    QByteArray mainPart();
    // A repository file, with comments above the first section. Its sections are appended to the list.
    QByteArray repoFile(QList<Section>& list);
    // The repository sections of the main file, without comments above the first section.
    QByteArray sections(QList<Section>& list);
    // Makes a section and its source text.
    QByteArray section(Section& made);

    // A value as a user may type it: without line feeds, and without blanks at the beginning.
    QString typed();
    // A line with an unknown option, and a line feed.
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
