// SPDX-License-Identifier: GPL-2.0-or-later

// A table model that can make its views and proxies read all data again.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_HABSTRACTTABLEMODEL_H
#define WIDGETS_HABSTRACTTABLEMODEL_H

#include <QAbstractTableModel>

class HAbstractTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit HAbstractTableModel(QObject* parent = nullptr);

    // Resets the model without changing it. A proxy sorts from scratch afterwards, and views lose their
    // selection.
    void forceSortColumnRediscovery();
};

#endif
