// Keeps passwords from assistive programs, which are told every change of the text of any widget that has
// one, be it hidden or shown as password characters.
//
// Graphical thread.

#ifndef REPO_PASSWDACCESSIBLE_H
#define REPO_PASSWDACCESSIBLE_H

namespace PasswdAccessible {

// To be called before the first PasswdField, PasswdInnerLineEdit or PasswdInnerTextEdit is used; later calls
// do nothing. For assistive programs these have no text then; a PasswdField is a field for a password.
void install();

} // namespace PasswdAccessible

#endif
