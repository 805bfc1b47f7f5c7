// SPDX-License-Identifier: GPL-2.0-or-later

// Gives a window the size that it had when it was last closed, in this run or another one.
//
// Graphical thread; owned by the window that it is made for.

#ifndef APP_WINDOWSIZEKEEPER_H
#define APP_WINDOWSIZEKEEPER_H

#include <QObject>
#include <QSize>

class QWidget;

class WindowSizeKeeper : public QObject
{
    Q_OBJECT

public:
    // The size has this name in the settings. The window must not have been shown yet.
    WindowSizeKeeper(const QString& name, QWidget* window);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* window;
    QString key;
    QSize sizeWhenShown; // if the user does not change it, it is not saved
};

#endif
