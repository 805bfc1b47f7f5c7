// SPDX-License-Identifier: GPL-2.0-or-later

// A bar that finds a text in a text edit or in a label: a field for the text, and buttons for the next and
// the previous match. The bar is hidden until the user presses Ctrl+F in its window. The search ignores case.
// When the search reaches one end of the text, it continues at the other end.
//
// Enter and F3 go to the next match; with Shift, they go to the previous match. Escape hides the bar. While
// the focus is in the bar, these keys never reach the buttons of the window.
//
// The object lives on the graphical thread; its Qt parent owns it. The window owns the text edit or the
// label.

#ifndef WIDGETS_FINDBAR_H
#define WIDGETS_FINDBAR_H

#include <QPointer>
#include <QWidget>

#include <memory>

class ExpressionEdit;
class PlainLabel;
class QLabel;
class QPushButton;
class QScrollArea;
class QTextEdit;

class FindBar : public QWidget
{
    Q_OBJECT

public:
    // The bar becomes a child of the window. The layout of the window must contain the bar, directly below
    // the text.
    FindBar(QTextEdit* edit, QWidget* window);
    // The label must contain plain text that can be selected. The label must be the widget of the area.
    FindBar(QLabel* label, QScrollArea* area, QWidget* window);
    ~FindBar() override;

public Q_SLOTS:
    // Shows the bar and moves the focus to its field.
    void open();
    // Hides the bar, and gives the focus back to the widget that had the focus before open().
    void dismiss();
    void findNext();
    void findPrevious();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void findTyped();

private:
    // The text in which the bar finds matches.
    class Text;
    class EditText;
    class LabelText;

    FindBar(std::unique_ptr<Text> searched, QWidget* window);
    void createContents();
    void find(int from, bool backward);
    void showFound(bool found);

    std::unique_ptr<Text> text;
    // These four members are null until the bar is first opened, because most windows never show it.
    ExpressionEdit* field;
    QPushButton* nextButton;
    QPushButton* previousButton;
    PlainLabel* result;
    QPointer<QWidget> focusBefore; // the widget that had the focus before the bar was shown
};

#endif
