// SPDX-License-Identifier: GPL-2.0-or-later

// Hides passwords from assistive programs. Qt reports each change to a widget's text to these programs, even
// if the widget is hidden or shows password characters.
//
// Only the graphical thread calls this function.

#ifndef REPO_PASSWDACCESSIBLE_H
#define REPO_PASSWDACCESSIBLE_H

namespace PasswdAccessible {

// Call this function before the first use of a PasswdField, PasswdInnerLineEdit or PasswdInnerTextEdit.
// Assistive programs then see no text of these widgets, and see a PasswdField as a password field. A second
// call does nothing.
void install();

} // namespace PasswdAccessible

#endif
