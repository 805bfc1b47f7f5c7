// Shows what the configuration says about one repository, and opens it in the user's web browser.
//
// Graphical thread; a child of the description of a package, which uses it again.

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

    // Keeps a copy. Passwords inside the URLs are not shown.
    void config(const Repo::Entry& repository);
    // Adds the pair to the row and goes on to the next one; without a value nothing is added.
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
