// SPDX-License-Identifier: GPL-2.0-or-later

// A line edit for a password.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef REPO_PASSWDFIELD_H
#define REPO_PASSWDFIELD_H

#include <QLineEdit>

class PasswdField : public QLineEdit
{
    Q_OBJECT

public:
    explicit PasswdField(QWidget* parent = nullptr);
};

#endif
