// SPDX-License-Identifier: GPL-2.0-or-later

// Keeps Qt from loading OpenGL. The program paints without OpenGL, but Qt would load the OpenGL driver with
// the first window. This would take a third of the time from the start of the program until the window is
// painted. The driver would also need 50 MiB of memory.
//
// Qt decides about OpenGL when it creates the first window. Therefore main() creates a WithoutOpenGl on the
// graphical thread before the first window, and destroys it afterwards. The programs that VYRE starts later
// do not see the setting.

#ifndef APP_BASE_WITHOUTOPENGL_H
#define APP_BASE_WITHOUTOPENGL_H

class WithoutOpenGl
{
public:
    // Sets QT_XCB_GL_INTEGRATION for this process, unless the user has set it.
    WithoutOpenGl();
    ~WithoutOpenGl();
    WithoutOpenGl(const WithoutOpenGl&) = delete;
    WithoutOpenGl& operator=(const WithoutOpenGl&) = delete;

private:
    bool isSet;
};

#endif
