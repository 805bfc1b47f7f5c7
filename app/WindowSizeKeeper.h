// SPDX-License-Identifier: GPL-2.0-or-later

// Restores the size that a window had when it was last closed, in this run of the program or in an earlier
// run.
//
// A WindowSizeKeeper lives on the graphical thread. The window owns it.

#ifndef APP_WINDOWSIZEKEEPER_H
#define APP_WINDOWSIZEKEEPER_H

#include <QObject>
#include <QSize>

class QWidget;

class WindowSizeKeeper : public QObject
{
    Q_OBJECT

public:
    // `name` is the name of the size in the settings. Create the object before the window is shown.
    WindowSizeKeeper(const QString& name, QWidget* window);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* window;
    QString key;
    QSize sizeWhenShown; // a size is saved only if it differs from this size
};

#endif
