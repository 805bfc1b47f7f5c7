// SPDX-License-Identifier: GPL-2.0-or-later

// Shows the configuration of one repository, and opens the repository in the user's web browser.
//
// A RepoDialog lives on the graphical thread. Its Qt parent is the description dialog, which uses the same
// object repeatedly.

#ifndef PACKAGETABLE_DESCRIBEREPODIALOG_H
#define PACKAGETABLE_DESCRIBEREPODIALOG_H

#include <QDialog>

#include "repo/RepoEntry.h"

class HScrollArea;
class QGridLayout;
class QVBoxLayout;
class YumIO;

namespace PackageTable {
namespace Describe {
namespace Instance {

class RepoDialog : public QDialog
{
    Q_OBJECT

public:
    // The main window owns the back end.
    RepoDialog(YumIO* backEnd, QWidget* parent);

    // Shows a copy of the repository, without passwords in the URLs.
    void config(const Repo::Entry& repository);
    // Adds the pair as a row and advances to the next row. If the value is empty, the function adds nothing.
    void addPair(int& row, QString label, QString value);

    void setVisible(bool visible) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

public Q_SLOTS:
    void browse();

private:
    void clear();

    YumIO* yumIO;
    Repo::Entry repo;
    QVBoxLayout* top;
    QWidget* content;  // each config() creates it; null while the dialog is closed
    QWidget* pairs;    // inside `content`
    QGridLayout* grid; // the layout of `pairs`
    HScrollArea* area; // around `pairs`; null while the dialog is closed
};

} // namespace Instance
} // namespace Describe
} // namespace PackageTable

#endif
