// SPDX-License-Identifier: GPL-2.0-or-later

// A text edit that shows a text with its passwords masked; toPlainText() is the masked text.
//
// Graphical thread; owned by its Qt parent.

#ifndef REPO_PASSWDTEXTEDIT_H
#define REPO_PASSWDTEXTEDIT_H

#include "repo/PasswdEdit.h"
#include "widgets/HTextEdit.h"

class PasswdTextEdit : public PasswdEdit<HTextEdit, PasswdInnerTextEdit>
{
    Q_OBJECT

public:
    // Masks the passwords in URLs. In each match of the expression, its first capture is a password too.
    explicit PasswdTextEdit(const QRegExp& mask, QWidget* parent = nullptr);
    PasswdTextEdit(const QRegExp& mask, int columnCount, int rowCount, QWidget* parent = nullptr);
    // For a text that does not consist of URLs.
    PasswdTextEdit(Credentials::Text kind, int columnCount, int rowCount, QWidget* parent = nullptr);

    void setRealPlainText(const QString& text);
    QString realPlainText() const;

Q_SIGNALS:
    // Also emitted when the masked text stays the same.
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
