// SPDX-License-Identifier: GPL-2.0-or-later

// Answers message boxes as a user does, and records the boxes. On request, an AnsweringUser also answers
// dialogs that are no message boxes. It works in the program's own event loop and in the test's event loop.
// A worker's question ignores input for a moment after it appears; an AnsweringUser shortens this moment.

#ifndef TESTS_SUPPORT_ANSWERINGUSER_H
#define TESTS_SUPPORT_ANSWERINGUSER_H

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <QtTest>

#include <functional>

#include "tests/support/Buttons.h"
#include "tests/support/Question.h"

// The texts of a dialog. If the dialog is not a message box, some members are empty.
struct ShownBox
{
    QString title;
    QString text;
    QWidget* parent = nullptr;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons = QMessageBox::NoButton;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QMessageBox::StandardButton escapeButton = QMessageBox::NoButton;
    Qt::TextFormat labelFormat = Qt::AutoText;
};

class AnsweringUser
{
public:
    using Answer = std::function<void(QDialog*)>;
    enum Whom { MessageBoxes, EveryDialog };

    explicit AnsweringUser(Answer first = key(Qt::Key_Return), Whom answered = MessageBoxes)
        : answer(std::move(first)), whom(answered)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
        timer.start(5);
        QuestionGuard::pause = 1;
    }
    Q_DISABLE_COPY(AnsweringUser)

    // Presses a key.
    static Answer key(Qt::Key pressed)
    {
        return [pressed](QDialog* dialog) { QTest::keyClick(dialog, pressed); };
    }
    // Clicks a button of a message box.
    static Answer click(QMessageBox::StandardButton button)
    {
        return [button](QDialog* dialog) {
            QTest::mouseClick(qobject_cast<QMessageBox*>(dialog)->button(button), Qt::LeftButton);
        };
    }
    // Clicks the button with this text.
    static Answer click(const QString& text)
    {
        return [text](QDialog* dialog) { QTest::mouseClick(buttonOf(dialog, text), Qt::LeftButton); };
    }
    // Clicks the button with this text; presses Return if the dialog has no such button.
    static Answer clickIfThere(const QString& text)
    {
        return [text](QDialog* dialog) {
            QPushButton* button = findButton(dialog, text);
            if (button != nullptr) {
                QTest::mouseClick(button, Qt::LeftButton);
            } else {
                QTest::keyClick(dialog, Qt::Key_Return);
            }
        };
    }

    QStringList titles() const
    {
        QStringList result;
        for (const ShownBox& box : seen) {
            result << box.title;
        }
        return result;
    }
    QStringList texts() const
    {
        QStringList result;
        for (const ShownBox& box : seen) {
            result << box.text;
        }
        return result;
    }
    // The titles and texts of all dialogs, so that one comparison checks all of them.
    QString all() const { return titles().join(", ") + ": " + texts().join(" | "); }

    // The dialogs that have opened, in order.
    QList<ShownBox> seen;
    // Answers the next dialog.
    Answer answer;

private:
    void look()
    {
        // An answer processes events, so the timer may call this function again before the answer has ended.
        if (answering) {
            return;
        }
        QWidget* window = QApplication::activeModalWidget();
        if (window == nullptr && whom == MessageBoxes) {
            window = QApplication::activeWindow(); // the box is not modal
        }
        QDialog* dialog =
            whom == MessageBoxes ? qobject_cast<QMessageBox*>(window) : qobject_cast<QDialog*>(window);
        if (dialog == nullptr || !dialog->isVisible()) {
            last = nullptr;
            return;
        }
        if (last != dialog) {
            last = dialog;
            note(dialog);
        }
        if (!takesInput(dialog)) {
            return;
        }
        // If the window is just getting the focus, it may lose the click. In this case, the next call of this
        // function answers again.
        const QScopedValueRollback<bool> guard(answering, true);
        answer(dialog);
    }
    void note(const QDialog* dialog)
    {
        ShownBox shown;
        shown.title = dialog->windowTitle();
        shown.parent = dialog->parentWidget();
        if (const auto* box = qobject_cast<const QMessageBox*>(dialog)) {
            shown.text = box->text();
            shown.icon = box->icon();
            shown.buttons = box->standardButtons();
            shown.defaultButton = box->standardButton(box->defaultButton());
            shown.escapeButton = box->standardButton(box->escapeButton());
            shown.labelFormat = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->textFormat();
        } else {
            for (const QLabel* label : dialog->findChildren<QLabel*>()) {
                shown.text += label->text();
            }
        }
        seen.append(shown);
    }

    const Whom whom;
    QTimer timer;
    QPointer<QDialog> last;
    bool answering = false;
};

#endif
