// Shows everything that the back end knows about one row of the package table: one area for the record and a
// shorter one for each further installed version.
//
// Graphical thread; the model makes one with the table as its parent, and uses it again. It holds nothing of
// a record while it is closed.

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

    // Fetches all texts now. The back end, the record and the configuration (which may be null) are not owned
    // and must stay until the dialog has been closed.
    void config(YumIO* yumIO, const Package::Entry& entry, YumConfIO* yumConfIO);
    void setReady(bool isReady) override;
    bool isClosing() const override { return closing; }

    void setVisible(bool visible) override;

public Q_SLOTS:
    void done(int result) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void clear();
    void closeLater();

    YumIO* backEnd; // null until the first config()
    QHBoxLayout* top;
    QWidget* content; // made by each config(); null while closed
    QList<Instance::Area*> areas;
    bool ready;
    bool closing;
    QPushButton* closeButton;
};

} // namespace Describe
} // namespace PackageTable

#endif
