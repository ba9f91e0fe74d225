#ifndef QZLOG_VERSION_H
#define QZLOG_VERSION_H

#include "qzlog/export.h"

/// The version of the package these headers belong to (the version of the interface, see also GetZRKVersion()).
#define QZLOG_VERSION_MAJOR 1
#define QZLOG_VERSION_MINOR 0
#define QZLOG_VERSION_PATCH 0

/// The library's own version text, "1.1.1.0000": static storage, not to be freed. Any thread.
QZLOG_EXPORT const char* GetZRKVersion();

#endif  // QZLOG_VERSION_H
