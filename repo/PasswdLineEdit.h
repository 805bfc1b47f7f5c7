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
    // The first capture of the expression is the password of a text that matches it as a whole.
    explicit PasswdLineEdit(QRegExp const& mask, QWidget* parent = nullptr);

    void setRealText(QString const& text);
    QString realText() const;

Q_SIGNALS:
    // Also emitted when the masked text stays the same.
    void realTextChanged(const QString& real);

protected:
    bool selectsToRemove(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged();
};

#endif
