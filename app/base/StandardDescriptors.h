// SPDX-License-Identifier: GPL-2.0-or-later

// Makes sure that the descriptors 0 to 2 are open.
//
// Otherwise the next opened files get these numbers. Output would then be written into these files, and the
// capture of output would replace them by a pipe.
//
// main() calls it before everything else, while no other thread exists.

#ifndef APP_BASE_STANDARDDESCRIPTORS_H
#define APP_BASE_STANDARDDESCRIPTORS_H

namespace StandardDescriptors {

// Opens each closed descriptor on the null device.
void ensure();

} // namespace StandardDescriptors

#endif
