// SPDX-License-Identifier: GPL-2.0-or-later

// Draws the cells of an HTableView.
//
// An HItemDelegate lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HITEMDELEGATE_H
#define WIDGETS_HITEMDELEGATE_H

#include <QItemDelegate>

class HItemDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    explicit HItemDelegate(QObject* parent = nullptr);

    // Shows the tool tip of a cell as plain text, because the texts of a table come from packages and
    // repositories.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};

#endif
