#include "app/base/Program.h"

const char* program = "vyre";
QApplication* application = nullptr;
