// SPDX-License-Identifier: GPL-2.0-or-later

// The repositories as a table of four columns. Row i shows entry i of the configuration's list.
//
// The object lives on the graphical thread; its Qt parent owns it. The object has no copy of the list: call
// reset() after each change to the list that does not go through this model.

#ifndef REPO_REPOEDITORMODEL_H
#define REPO_REPOEDITORMODEL_H

#include <QFont>
#include <QIcon>
#include <QPointer>

#include "widgets/HAbstractTableModel.h"

class QWidget;
class YumConfIO;
class YumIO;

namespace Repo {
struct Entry;
}

namespace RepoEditor {

enum Column { SessionColumn = 0, PermanentColumn = 1, IdentifierColumn = 2, NameColumn = 3, ColumnCount = 4 };

class Model : public HAbstractTableModel
{
    Q_OBJECT

public:
    // The main window owns the back end and the configuration. The configuration must outlive the model.
    Model(YumIO* backEnd, YumConfIO* conf, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    // If `sessionEnabled` of the configuration lacks the row's repository, adds this repository to
    // `sessionEnabled` with the value false.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // For the session column, returns whether the session uses the repository. For any other column, returns
    // whether the repository is enabled.
    bool isTicked(const QModelIndex& index) const;

    // Sets the view's font. The model shows new repositories in the italic form of this font.
    void setViewFont(const QFont& font);

    // Appends an entry and returns its row.
    int addRow(const Repo::Entry& entry);
    // Returns false if the row does not exist.
    bool removeRow(int row, const QModelIndex& parent = QModelIndex());
    void reset();

    using HAbstractTableModel::createIndex;
    // Returns the index of the first column in the row.
    QModelIndex createIndex(int row) const;
    using HAbstractTableModel::dataChanged;
    // Emits dataChanged() for all columns of the row.
    void dataChanged(int row);

    // Toggles the use of the repository in this session.
    void toggleUse(const QModelIndex& index);
    // Toggles the `enabled` option in the repository's section. If the section lacks this option, sets it to
    // the opposite of the default value that the table shows.
    void toggleEnabled(const QModelIndex& index);
    // Opens the repository in the user's web browser. Messages appear over `window`.
    void browse(const QModelIndex& index, QWidget* window);

Q_SIGNALS:
    void useChanged();
    void configChanged();

private:
    // Returns false if the row does not exist. A view may still ask for a row that was removed.
    bool hasEntry(const QModelIndex& index) const;
    bool isUsed(const Repo::Entry& entry) const;
    bool isEnabled(const Repo::Entry& entry) const;

    QPointer<YumIO> yumIO;
    YumConfIO* yumConfIO;
    QFont italicFont;
    QIcon offIcon;
    QIcon onIcon;
};

} // namespace RepoEditor

#endif
