// What the whole process is called and runs in.
//
// Set once by main() before any other thread exists, read by everyone afterwards.

#ifndef APP_BASE_PROGRAM_H
#define APP_BASE_PROGRAM_H

class QApplication;

// The base name of argv[0]; every message to standard error at start-up begins with it. Not owned.
extern const char* program;

// The one application object; owned by main(), null outside its life.
extern QApplication* application;

#endif
