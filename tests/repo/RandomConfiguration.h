// Configurations made at random from a seed, and what each of their sections says, worked out apart from the
// code that reads and writes them.

#ifndef TESTS_REPO_RANDOMCONFIGURATION_H
#define TESTS_REPO_RANDOMCONFIGURATION_H

#include <QByteArray>
#include <QList>
#include <QRandomGenerator>
#include <QString>

// One section as it is to be read.
struct Section
{
    QString id;
    QString name;
    QString baseurl;
    QString mirrorlist;
    int enabled = 1;
    int gpgcheck = 1;
    QString options;

    // As it is to be written.
    QString text() const;
};

// A text as it is read after it has been written: it is written as UTF-8 and read as Latin-1.
QString readBack(const QString& text);
Section readBack(const Section& section);

class RandomConfiguration
{
public:
    // With `ascii` no byte is above 0x7F.
    RandomConfiguration(quint32 seed, bool ascii) : random(seed), onlyAscii(ascii) {}

    // The lines above the first section of the main file.
    QByteArray mainPart();
    // A repository file, comments above the first section included; its sections are appended to the list.
    QByteArray repoFile(QList<Section>& list);
    // Sections only, as they stand in the main file.
    QByteArray sections(QList<Section>& list);
    // A section and its source.
    QByteArray section(Section& made);

    // Values as somebody may type them: no line feeds, and no blanks at the beginning.
    QString typed();
    // A line that is none of the known options, with a line feed.
    QString optionLine();

    // In 0 ... limit - 1.
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
