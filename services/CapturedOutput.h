// SPDX-License-Identifier: GPL-2.0-or-later

// The interface that receives captured output and failures of the capture. The back end implements it.

#ifndef SERVICES_CAPTUREDOUTPUT_H
#define SERVICES_CAPTUREDOUTPUT_H

#include <QString>

class CapturedOutput
{
public:
    // The next two functions receive a piece of the output, which may end inside a line. They are called on
    // the graphical thread.
    virtual void stdoutCapturedWrite(const QString& text) = 0;
    virtual void stderrCapturedWrite(const QString& text) = 0;
    // Called on the graphical thread after the last piece of one capture.
    virtual void captureEnded() {}
    // Called on the thread of the operation if the capture could not be started or ended.
    virtual void error(const QString& text) = 0;

protected:
    ~CapturedOutput() = default;
};

#endif
