// SPDX-License-Identifier: GPL-2.0-or-later

// Receives the captured output, and the failures of the capture. The back end implements it.

#ifndef SERVICES_CAPTUREDOUTPUT_H
#define SERVICES_CAPTUREDOUTPUT_H

#include <QString>

class CapturedOutput
{
public:
    // A piece of the output, not necessarily whole lines. Graphical thread.
    virtual void stdoutCapturedWrite(const QString& text) = 0;
    virtual void stderrCapturedWrite(const QString& text) = 0;
    // Called after the last piece of one capture. Graphical thread.
    virtual void captureEnded() {}
    // The capture could not be set up or undone. Called on the thread of the operation.
    virtual void error(const QString& text) = 0;

protected:
    ~CapturedOutput() = default;
};

#endif
