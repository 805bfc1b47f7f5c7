// The repositories as a table of four columns: row i is entry i of the configuration's list.
//
// Graphical thread; owned by its Qt parent. It copies nothing: whoever changes the list otherwise than
// through this model calls reset() afterwards.

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
    // Neither the back end nor the configuration is owned; the configuration must outlive the model.
    Model(YumIO* backEnd, YumConfIO* conf, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    // A repository that the session enable table does not know is entered there as not used.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Whether the repository is used in the session, or enabled, by the index's column.
    bool isTicked(const QModelIndex& index) const;

    // The font of the view; new repositories are shown in its italics.
    void setViewFont(const QFont& font);

    // Appends; returns the new row.
    int addRow(const Repo::Entry& entry);
    // False when there is no such row.
    bool removeRow(int row, const QModelIndex& parent = QModelIndex());
    void reset();

    using HAbstractTableModel::createIndex;
    // The first column of the row.
    QModelIndex createIndex(int row) const;
    using HAbstractTableModel::dataChanged;
    // Announces all columns of the row.
    void dataChanged(int row);

    // Whether the repository is used in this session.
    void toggleUse(const QModelIndex& index);
    // Whether its configuration enables it; the first call inverts what shows.
    void toggleEnabled(const QModelIndex& index);
    // In the user's web browser; messages are shown over `window`.
    void browse(const QModelIndex& index, QWidget* window);

Q_SIGNALS:
    void useChanged();
    void configChanged();

private:
    // The view may ask for rows that are gone already.
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
