// SPDX-License-Identifier: GPL-2.0-or-later

// Hides passwords from assistive programs. Qt reports each change of a text to these programs, for every
// widget with a text, even if the widget is hidden or shows password characters.
//
// Graphical thread.

#ifndef REPO_PASSWDACCESSIBLE_H
#define REPO_PASSWDACCESSIBLE_H

namespace PasswdAccessible {

// Must run before the first use of a PasswdField, PasswdInnerLineEdit or PasswdInnerTextEdit; later calls do
// nothing. Afterwards these widgets have no text for assistive programs. A PasswdField has the role of a
// password field.
void install();

} // namespace PasswdAccessible

#endif
