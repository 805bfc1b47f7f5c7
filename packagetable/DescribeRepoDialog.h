// SPDX-License-Identifier: GPL-2.0-or-later

// Shows the configuration of one repository, and opens the repository in the web browser of the user.
//
// Graphical thread. A child of the description of a package, which uses it repeatedly.

#ifndef PACKAGETABLE_DESCRIBEREPODIALOG_H
#define PACKAGETABLE_DESCRIBEREPODIALOG_H

#include <QDialog>

#include "repo/RepoEntry.h"

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
    // The back end is not owned.
    RepoDialog(YumIO* backEnd, QWidget* parent);

    // Stores a copy. Passwords in the URLs are not shown.
    void config(const Repo::Entry& repository);
    // Adds the pair to the row and advances to the next row. Without a value it adds nothing.
    void addPair(int& row, QString label, QString value);

    void setVisible(bool visible) override;

public Q_SLOTS:
    void browse();

private:
    void clear();

    YumIO* yumIO;
    Repo::Entry repo;
    QVBoxLayout* top;
    QWidget* content;  // made by each config(); null while closed
    QWidget* pairs;    // inside it
    QGridLayout* grid; // of the pairs
};

} // namespace Instance
} // namespace Describe
} // namespace PackageTable

#endif
