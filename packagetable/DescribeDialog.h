// SPDX-License-Identifier: GPL-2.0-or-later

// Shows all data that the back end has about one row of the package table. The dialog has an area for the
// record, and a shorter area for each other installed version.
//
// The dialog lives on the graphical thread. The model creates one dialog with the table as its parent, and
// uses this dialog repeatedly. A closed dialog contains no data of a record.

#ifndef PACKAGETABLE_DESCRIBEDIALOG_H
#define PACKAGETABLE_DESCRIBEDIALOG_H

#include <QDialog>
#include <QList>

#include "packagetable/DescribeHost.h"

class QHBoxLayout;
class QPushButton;
class YumConfIO;
class YumIO;
namespace Package {
class Entry;
}

namespace PackageTable {
namespace Describe {

namespace Instance {
class Area;
}

class Dialog : public QDialog, public Host
{
    Q_OBJECT

public:
    explicit Dialog(QWidget* parent = nullptr);
    ~Dialog() override;

    // Shows this record, and reads all its texts immediately. The main window owns the back end and the
    // configuration, and the back end owns the record. All three must exist until the dialog closes. The
    // configuration may be null.
    void config(YumIO* yumIO, const Package::Entry& entry, YumConfIO* yumConfIO);
    void setReady(bool isReady) override;
    bool isClosing() const override { return closing; }

    void setVisible(bool visible) override;

public Q_SLOTS:
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void clear();
    void closeLater();

    YumIO* backEnd; // null before the first config()
    QHBoxLayout* top;
    QWidget* content; // each config() creates it; null while the dialog is closed
    QList<Instance::Area*> areas;
    bool ready;
    bool closing;
    QPushButton* closeButton;
};

} // namespace Describe
} // namespace PackageTable

#endif
