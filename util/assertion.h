#ifndef QZLOG_UTIL_ASSERTION_H
#define QZLOG_UTIL_ASSERTION_H

/// Reports a violated precondition on stderr and, at level 1, in the debug log, naming the expression as written, the
/// source unit and the line, and returns: the code after the check must be safe whatever it was given. Never throws.
void QZ_assertion_violation(const char* expression, const char* file, int line);

#endif  // QZLOG_UTIL_ASSERTION_H
