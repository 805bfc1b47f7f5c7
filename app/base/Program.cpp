// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/Program.h"

const char* program = "vyre";
QApplication* application = nullptr;
