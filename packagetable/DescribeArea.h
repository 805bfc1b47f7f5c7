// SPDX-License-Identifier: GPL-2.0-or-later

// The contents of the description dialog for one record. The area has pairs of a label and a value, and
// buttons for the file list, the change log and the repository.
//
// An Area lives on the graphical thread. The dialog owns the Area, deletes the widgets of the Area first, and
// then deletes the Area.

#ifndef PACKAGETABLE_DESCRIBEAREA_H
#define PACKAGETABLE_DESCRIBEAREA_H

#include <QList>
#include <QObject>

#include "yumio/Fields.h"

class HScrollArea;
class QGridLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;
class TextDialog;
class YumConfIO;
class YumIO;
namespace Package {
class Entry;
}

namespace PackageTable {
namespace Describe {

class Host;

namespace Instance {

class RepoDialog;

class Area : public QObject
{
    Q_OBJECT

public:
    // Adds widgets to the layout. The layout's parent widget owns these widgets. The caller still owns the
    // arguments. If `primary` is true, the area shows all fields; otherwise it shows only the fields that
    // differ between versions.
    Area(Describe::Host* window, QVBoxLayout* layout, YumIO* backEnd, const Package::Entry& record,
         YumConfIO* configuration, bool primary);

    // addHeader() and addPair() add one row and increase `row`. If the value is empty, addPair() adds
    // nothing.
    void addHeader(int& row, QString text);
    void addPair(int& row, QString label, QString value);
    QPushButton* addButton(int& row, QString label, QString buttonText);
    // Adds a row with a button after the value, and returns the button. If the value is empty, adds nothing
    // and returns null.
    QPushButton* addPairButton(int& row, QString label, QString value, QString buttonText);

    // Updates the labels of the buttons. Each label shows whether a click must first load data.
    void updateButtons();

    // Enables or disables the buttons.
    void setReady(bool ready);

public Q_SLOTS:
    void handleRepo();
    void handleFiles();
    void handleChangeLog();

private:
    struct Button
    {
        QString label;
        QPushButton* button; // may be null
    };

    // While a Busy object exists, the user can neither close the dialog nor press another button.
    class Busy;
    class Pairs;

    void addField(Fields::Field field);
    void updateButton(Button& button, bool loaded);
    QLabel* addLabel(int row, const QString& text, Qt::Alignment vertical);
    QLabel* makeValue(const QString& value);
    QPushButton* makeButton(const QString& label, const QString& buttonText);
    void layOut();
    void showText(const QString& title, const QString& text);

    Describe::Host* host;
    YumIO* yumIO;
    const Package::Entry* entry;
    YumConfIO* yumConfIO;
    QWidget* dialogParent;  // the parent of the sub-dialogs
    TextDialog* textDialog; // null until the user opens it
    RepoDialog* repoDialog; // null until the user opens it
    Pairs* inner;
    QGridLayout* grid;
    HScrollArea* scrollArea;
    qint32 nextRow;
    Button filesButton;
    Button changeLogButton;
    QPushButton* repoButton;
    int labelWidth; // the width of the widest label
    int valueWidth; // the width of the widest value without line breaks
    QList<QLabel*> values;
};

} // namespace Instance
} // namespace Describe
} // namespace PackageTable

#endif
