// Sees to it that the descriptors 0 to 2 are open.
//
// Otherwise the files that are opened next get these numbers: output is written into them, and when output is
// captured, their numbers are given to a pipe.
//
// Called by main() before anything else, when there is no other thread.

#ifndef APP_BASE_STANDARDDESCRIPTORS_H
#define APP_BASE_STANDARDDESCRIPTORS_H

namespace StandardDescriptors {

// Opens those that are closed on the null device.
void ensure();

} // namespace StandardDescriptors

#endif
