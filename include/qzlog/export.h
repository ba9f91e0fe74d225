#ifndef QZLOG_EXPORT_H
#define QZLOG_EXPORT_H

/// Marks what the shared library exports. Everything else is built with hidden visibility.
#define QZLOG_EXPORT __attribute__((visibility("default")))

/// Marks what an exported class keeps to itself.
#define QZLOG_NO_EXPORT __attribute__((visibility("hidden")))

/// Gives an exported variable a symbol of the library's own, qzlog_NAME. A program's variable that happens to have the
/// same name is then another one: without this, the program's would take its place inside the library too. (Functions
/// need none: the library's calls of its own functions are bound within the library.)
#define QZLOG_SYMBOL(variable) __asm__("qzlog_" #variable)

#endif  // QZLOG_EXPORT_H
