// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HAbstractTableModel.h"

HAbstractTableModel::HAbstractTableModel(QObject* parent) : QAbstractTableModel(parent) {}

void HAbstractTableModel::forceSortColumnRediscovery()
{
    beginResetModel();
    endResetModel();
}
