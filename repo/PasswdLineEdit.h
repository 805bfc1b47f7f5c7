// SPDX-License-Identifier: GPL-2.0-or-later

// A line edit that shows a text with its passwords masked; text() is the masked text.
//
// Graphical thread; owned by its Qt parent.

#ifndef REPO_PASSWDLINEEDIT_H
#define REPO_PASSWDLINEEDIT_H

#include "repo/PasswdEdit.h"

class PasswdLineEdit : public PasswdEdit<QLineEdit, PasswdInnerLineEdit>
{
    Q_OBJECT

public:
    // Masks the passwords in URLs. The first capture of the expression is a password too, if the whole text
    // matches.
    explicit PasswdLineEdit(const QRegExp& mask, QWidget* parent = nullptr);

    void setRealText(const QString& text);
    QString realText() const;

Q_SIGNALS:
    // Also emitted when the masked text stays the same.
    void realTextChanged(const QString& real);

protected:
    bool selectForRemoval(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged();
};

#endif
