// SPDX-License-Identifier: GPL-2.0-or-later

// Protects a question of a worker from input that is meant for something else. Such a question appears at a
// moment that the user cannot foresee, perhaps between two key presses.
//
// For half a second after the question appears on the screen, its buttons are disabled, and the question
// ignores keys and clicks. The same happens when the question first becomes the active window. After that, a
// key or mouse button that the user pressed earlier has no effect until the user releases it.
//
// A QuestionGuard lives on the graphical thread. The code that runs the dialog owns the guard, and deletes
// the guard before the dialog.

#ifndef SERVICES_QUESTIONGUARD_H
#define SERVICES_QUESTIONGUARD_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTimer>

class QAbstractButton;
class QDialog;
class QEvent;
class QKeyEvent;
class QMouseEvent;
class QWidget;

class QuestionGuard : public QObject
{
    Q_OBJECT

public:
    // The dialog must already have all its buttons, and must not be visible yet. If a widget of the dialog
    // has the focus now, this widget gets the focus back when the question accepts input.
    explicit QuestionGuard(QDialog* dialog);

    // The name of a property of the dialog. Its value is true while the question accepts input.
    static constexpr char takesInput[] = "takesInput";
    // The time for which the question ignores input, in milliseconds. Tests of other classes shorten it.
    static inline int pause = 500;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void beginPause();
    void open();

private:
    void close();
    bool belongsToQuestion(const QObject* object) const;
    // ignoresKey() and ignoresMouse() return whether the question ignores the event.
    bool ignoresKey(const QKeyEvent* event);
    bool ignoresMouse(const QMouseEvent* event);
    bool repeats(const QKeyEvent* event) const;

    QDialog* question;
    QTimer end;
    bool isOpen;
    bool painted;
    bool activated;
    QList<QPointer<QAbstractButton>> disabled;
    QPointer<QWidget> focus;
    QSet<quint32> keys;             // keys that were pressed while the question accepted input
    QHash<quint32, ulong> releases; // the time of each key's last release
    Qt::MouseButtons mouseButtons;
};

#endif
