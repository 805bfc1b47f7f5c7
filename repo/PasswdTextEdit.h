// A text edit that shows a text with its passwords masked. The real text is held, and edited, by a hidden
// text edit beside this one; toPlainText() and everything else that shows up on the screen, on the clipboard
// or in an assistive program is the masked text.
//
// Graphical thread; owned by its Qt parent. Owns the hidden text edit, which has the same parent.

#ifndef REPO_PASSWDTEXTEDIT_H
#define REPO_PASSWDTEXTEDIT_H

#include <QPointer>

#include "repo/PasswdMask.h"
#include "widgets/HTextEdit.h"

class PasswdInnerTextEdit;

class PasswdTextEdit : public HTextEdit
{
    Q_OBJECT

public:
    // The first capture of the expression is the password, in every match of it in the text.
    explicit PasswdTextEdit(QRegExp const& mask, QWidget* parent = nullptr);
    PasswdTextEdit(QRegExp const& mask, int columnCount, int rowCount, QWidget* parent = nullptr);
    ~PasswdTextEdit() override;

    // Masks in every match of a further expression, too.
    void maskEverywhere(QRegExp const& expression);

    void setRealPlainText(QString const& text);
    QString realPlainText() const;

Q_SIGNALS:
    // Also emitted when the masked text stays the same.
    void realTextChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    void insertFromMimeData(const QMimeData* source) override;

private Q_SLOTS:
    void handleInnerTextChanged();
    void handleOwnTextChanged();

private:
    // The hidden edit takes over the cursor and the selection that the user has made here, and back.
    void passSelection();
    void takeSelection();
    void showText();
    bool editsSelection(QKeyEvent* event);
    void removeSelection();
    QChar passwordCharacter() const;

    PasswdMask mask;
    QPointer<PasswdInnerTextEdit> inner;
    QString shown; // what showText() has made of the real text
    bool showing;
};

#endif
