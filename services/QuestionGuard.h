// SPDX-License-Identifier: GPL-2.0-or-later

// Protects a question of a worker from input that is meant for something else. Such a question appears at a
// moment that the user cannot foresee, perhaps between two key presses.
//
// For the first half second in which the question is on the screen, its buttons are disabled and it takes no
// key and no click. The same applies to the first half second in which it is the active window. Afterwards it
// still ignores keys and mouse buttons that were pressed earlier and are held.
//
// It lives on the graphical thread. The code that runs the dialog owns it, and deletes it before the dialog.

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
    // The dialog has all its buttons and is not shown yet. If one of its widgets has the focus now, that
    // widget gets the focus when the question takes input.
    explicit QuestionGuard(QDialog* dialog);

    // The name of a property of the dialog: whether the question takes input.
    static constexpr char takesInput[] = "takesInput";
    // In milliseconds. Tests of other classes shorten it.
    static inline int pause = 500;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void beginPause();
    void open();

private:
    void close();
    bool belongsToQuestion(const QObject* object) const;
    // These return whether the question ignores the event.
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
    QSet<quint32> keys;             // pressed while the question took input
    QHash<quint32, ulong> releases; // the time of each key's last release
    Qt::MouseButtons mouseButtons;
};

#endif
