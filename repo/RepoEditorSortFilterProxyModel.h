// SPDX-License-Identifier: GPL-2.0-or-later

// Sorts the repositories. Identifiers and names are in natural order: repo9 comes before repo10.
//
// The proxy lives on the graphical thread; its Qt parent owns it. The same parent owns the source model.

#ifndef REPO_REPOEDITORSORTFILTERPROXYMODEL_H
#define REPO_REPOEDITORSORTFILTERPROXYMODEL_H

#include <QSortFilterProxyModel>

namespace RepoEditor {

class SortFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit SortFilterProxyModel(QObject* parent = nullptr);

    // Adds texts to the icons for users who cannot see them.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

protected:
    // Compares source indexes.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace RepoEditor

#endif
