// Sorts the repositories: identifiers and names in the order in which people count, so that repo9 comes
// before repo10.
//
// Graphical thread; owned by its Qt parent. The source model is not owned.

#ifndef REPO_REPOEDITORSORTFILTERPROXYMODEL_H
#define REPO_REPOEDITORSORTFILTERPROXYMODEL_H

#include <QSortFilterProxyModel>

namespace RepoEditor {

class SortFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit SortFilterProxyModel(QObject* parent = nullptr);

    // And texts for those who cannot see the icons.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

protected:
    // Source indexes.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace RepoEditor

#endif
