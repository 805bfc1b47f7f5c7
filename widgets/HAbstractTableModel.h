// SPDX-License-Identifier: GPL-2.0-or-later

// A table model with a function that makes its views and proxies read all data again.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef WIDGETS_HABSTRACTTABLEMODEL_H
#define WIDGETS_HABSTRACTTABLEMODEL_H

#include <QAbstractTableModel>

class HAbstractTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit HAbstractTableModel(QObject* parent = nullptr);

    // Resets the model without changing its data. Proxies then sort all rows again, and views lose their
    // selection.
    void forceSortColumnRediscovery();
};

#endif
