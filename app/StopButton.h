// SPDX-License-Identifier: GPL-2.0-or-later

// The button that stops the running operation. While the button is enabled, the Escape key also presses it.
// Its tool tip describes the effect of a press, or the reason why the operation cannot be stopped.
//
// The object lives on the graphical thread; its Qt parent owns it. The main window connects clicked() and
// reports each new state to the button.

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
    // Returns the same size in all states, so that the bars next to the button keep their width.
    QSize sizeHint() const override;
};

#endif
