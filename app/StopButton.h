// SPDX-License-Identifier: GPL-2.0-or-later

// The button that stops the running operation. Escape presses it too, while it is enabled. Its tool tip says
// what a press does, or why the operation cannot be stopped.
//
// Graphical thread; owned by its Qt parent. Its window connects clicked() and reports each new state.

#ifndef APP_STOPBUTTON_H
#define APP_STOPBUTTON_H

#include <QPushButton>

#include "yumio/StopRequest.h"

class StopButton : public QPushButton
{
    Q_OBJECT

public:
    explicit StopButton(QWidget* parent);

    void showState(StopRequest::State state);
    // The same in all states, so that the bars beside the button keep their width.
    QSize sizeHint() const override;
};

#endif
