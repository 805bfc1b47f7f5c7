// SPDX-License-Identifier: GPL-2.0-or-later

// Makes sure that the descriptors 0 to 2 are open.
//
// If one of these descriptors is closed, the next opened file gets the number of this descriptor. Output
// would then go to that file. When VYRE captures output, it would replace the descriptor of that file by a
// pipe.
//
// main() calls ensure() first, while no other thread exists.

#ifndef APP_BASE_STANDARDDESCRIPTORS_H
#define APP_BASE_STANDARDDESCRIPTORS_H

namespace StandardDescriptors {

// Opens the null device for each closed descriptor.
void ensure();

} // namespace StandardDescriptors

#endif
