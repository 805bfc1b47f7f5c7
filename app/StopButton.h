// SPDX-License-Identifier: GPL-2.0-or-later

// The button that stops the running operation. While the button is enabled, the Escape key also presses it.
// The tool tip describes the effect of a press, or the reason why the operation cannot be stopped.
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
    // What the table lists after the user has stopped the operation.
    enum class Result {
        FirstTable, // the installed packages, and the packages whose metadata are in the cache
        SameTable,  // the same packages and marks as before the operation
        Remains     // the operation has deleted the metadata, so many packages are missing
    };

    explicit StopButton(QWidget* parent);

    // Sets the result of a stop. The next showState() updates the tool tip, which describes this result.
    // Before the first call of setResult(), the result is FirstTable.
    void setResult(Result newResult) { result = newResult; }
    void showState(StopRequest::State state);
    // Returns the same size in all states, so that the bars next to the button keep their width.
    QSize sizeHint() const override;

private:
    QString effect() const;
    QString reason(StopRequest::State state) const;

    Result result;
};

#endif
