// A line edit that shows a text with its passwords masked. The real text is held, and edited, by a hidden
// line edit beside this one; text() and everything else that shows up on the screen, on the clipboard or in
// an assistive program is the masked text.
//
// Graphical thread; owned by its Qt parent. Owns the hidden line edit, which has the same parent.

#ifndef REPO_PASSWDLINEEDIT_H
#define REPO_PASSWDLINEEDIT_H

#include <QLineEdit>
#include <QPointer>

#include "repo/PasswdMask.h"

class PasswdInnerLineEdit;

class PasswdLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    // The first capture of the expression is the password of a text that matches it as a whole.
    explicit PasswdLineEdit(QRegExp const& mask, QWidget* parent = nullptr);
    ~PasswdLineEdit() override;

    // Masks in every match of a further expression, too.
    void maskEverywhere(QRegExp const& expression);

    void setRealText(QString const& text);
    QString realText() const;

Q_SIGNALS:
    // Also emitted when the masked text stays the same.
    void realTextChanged(const QString& real);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged(const QString& text);

private:
    // The hidden edit takes over the cursor and the selection that the user has made here, and back.
    void passSelection();
    void takeSelection();
    void showText();
    bool editsSelection(QKeyEvent* event);
    void copySelection(int clipboardMode);
    void removeSelection();
    // What comes now is undone by itself.
    void separateUndo();
    void insertReal(const QString& text);

    PasswdMask mask;
    QPointer<PasswdInnerLineEdit> inner;
    QString shown; // what showText() has made of the real text
    bool showing;
};

#endif
