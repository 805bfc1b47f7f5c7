// SPDX-License-Identifier: GPL-2.0-or-later

// The interface that receives captured output and reports of failed captures. The back end implements it.

#ifndef SERVICES_CAPTUREDOUTPUT_H
#define SERVICES_CAPTUREDOUTPUT_H

#include <QString>

class CapturedOutput
{
public:
    // Receives a piece of standard output, on the graphical thread. A piece may end in the middle of a line.
    virtual void stdoutCapturedWrite(const QString& text) = 0;
    // Receives a piece of standard error in the same way.
    virtual void stderrCapturedWrite(const QString& text) = 0;
    // Called on the graphical thread after the last piece of output.
    virtual void captureEnded() {}
    // Reports that the capture could not be started or ended. Called on the operation's thread.
    virtual void error(const QString& text) = 0;

protected:
    ~CapturedOutput() = default;
};

#endif
