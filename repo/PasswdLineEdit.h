// SPDX-License-Identifier: GPL-2.0-or-later

// A line edit that masks the passwords in its text. text() returns the masked text.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef REPO_PASSWDLINEEDIT_H
#define REPO_PASSWDLINEEDIT_H

#include "repo/PasswdEdit.h"

class PasswdLineEdit : public PasswdEdit<QLineEdit, PasswdInnerLineEdit>
{
    Q_OBJECT

public:
    // Masks the passwords in URLs. If the whole text matches the expression, the first capture is also a
    // password.
    explicit PasswdLineEdit(const QRegExp& mask, QWidget* parent = nullptr);

    void setRealText(const QString& text);
    QString realText() const;

Q_SIGNALS:
    // Emitted after each change to the real text, even if the masked text stays the same.
    void realTextChanged(const QString& real);

protected:
    bool selectForRemoval(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged();
};

#endif
