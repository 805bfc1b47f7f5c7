// SPDX-License-Identifier: GPL-2.0-or-later

// A text edit that masks the passwords in its text. toPlainText() returns the masked text.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef REPO_PASSWDTEXTEDIT_H
#define REPO_PASSWDTEXTEDIT_H

#include "repo/PasswdEdit.h"
#include "widgets/HTextEdit.h"

class PasswdTextEdit : public PasswdEdit<HTextEdit, PasswdInnerTextEdit>
{
    Q_OBJECT

public:
    // Masks the passwords in URLs. In each match of the expression, the first capture is also a password.
    explicit PasswdTextEdit(const QRegExp& mask, QWidget* parent = nullptr);
    PasswdTextEdit(const QRegExp& mask, int columnCount, int rowCount, QWidget* parent = nullptr);
    // Masks the passwords in a text of this kind, for example in options.
    PasswdTextEdit(Credentials::Text kind, int columnCount, int rowCount, QWidget* parent = nullptr);

    void setRealPlainText(const QString& text);
    QString realPlainText() const;

Q_SIGNALS:
    // Emitted after each change to the real text, even if the masked text stays the same.
    void realTextChanged();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    PasswdTextEdit(const PasswdMask& mask, int columnCount, int rowCount, QWidget* parent);

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged();
};

#endif
