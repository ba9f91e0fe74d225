#ifndef QZLOG_EXPORT_H
#define QZLOG_EXPORT_H

/// Marks what the shared library exports. Everything else is built with hidden visibility.
#define QZLOG_EXPORT __attribute__((visibility("default")))

/// Marks what an exported class keeps to itself.
#define QZLOG_NO_EXPORT __attribute__((visibility("hidden")))

#endif  // QZLOG_EXPORT_H
