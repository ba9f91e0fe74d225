#ifndef QZLOG_FOUNDATION_PLAIN_NAME_H
#define QZLOG_FOUNDATION_PLAIN_NAME_H

#include "qzlog/export.h"

/// Makes an exported variable, declared with QZLOG_SYMBOL, known to the linker under its plain name too, for programs
/// that declare it on their own. Stands once, in the source that defines the variable.
///
/// Weak, and never used in the library itself: where a program has a variable of that name, the name is the program's,
/// and the library's variable stays the library's. Linkers that copy the variable into a program's own data take both
/// names along.
#define QZLOG_PLAIN_NAME(variable)                                                   \
  extern QZLOG_EXPORT decltype(variable) variable##_by_plain_name __asm__(#variable) \
      __attribute__((weak, alias("qzlog_" #variable)))

#endif  // QZLOG_FOUNDATION_PLAIN_NAME_H
