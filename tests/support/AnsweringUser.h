// The user who answers message boxes, and other dialogs if wanted: notes each one that comes up and answers
// it, while the program waits in an event loop of its own or in that of the test.

#ifndef TESTS_SUPPORT_ANSWERINGUSER_H
#define TESTS_SUPPORT_ANSWERINGUSER_H

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <QtTest>

#include <functional>

// What a dialog said. What only message boxes have is empty for others.
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
    // Clicks the button with this text, with or without its "&".
    static Answer click(const QString& text)
    {
        return [text](QDialog* dialog) {
            if (!press(dialog, text)) {
                qFatal("there is no button %s", qPrintable(text));
            }
        };
    }
    // The same, and presses Return where there is no such button.
    static Answer clickIfThere(const QString& text)
    {
        return [text](QDialog* dialog) {
            if (!press(dialog, text)) {
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
    // All of it, for a comparison that shows what there was.
    QString all() const { return titles().join(", ") + ": " + texts().join(" | "); }

    // Every dialog that came up, once.
    QList<ShownBox> seen;
    // What is done with the next one.
    Answer answer;

private:
    static bool press(const QDialog* dialog, const QString& text)
    {
        for (QAbstractButton* button : dialog->findChildren<QAbstractButton*>()) {
            if (button->text() == text || button->text() == QLatin1Char('&') + text) {
                QTest::mouseClick(button, Qt::LeftButton);
                return true;
            }
        }
        return false;
    }
    void look()
    {
        // An answer lets the time pass.
        if (answering) {
            return;
        }
        QWidget* window = QApplication::activeModalWidget();
        if (window == nullptr && whom == MessageBoxes) {
            window = QApplication::activeWindow(); // a box that nothing waits for
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
        // What is clicked while the window only gets the focus may be lost: it is answered again then.
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
