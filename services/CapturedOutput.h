// Where captured output goes, and failures of the capture: the back end.

#ifndef SERVICES_CAPTUREDOUTPUT_H
#define SERVICES_CAPTUREDOUTPUT_H

#include <QString>

class CapturedOutput
{
public:
    // A piece of what was written, not necessarily whole lines. Graphical thread.
    virtual void stdoutCapturedWrite(const QString& text) = 0;
    virtual void stderrCapturedWrite(const QString& text) = 0;
    // Everything of one capture has been handed over. Graphical thread.
    virtual void captureEnded() {}
    // The capture could not be set up or undone. The thread of the operation.
    virtual void error(const QString& text) = 0;

protected:
    ~CapturedOutput() = default;
};

#endif
