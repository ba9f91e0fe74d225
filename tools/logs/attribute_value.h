#ifndef QZLOG_TOOLS_LOGS_ATTRIBUTE_VALUE_H
#define QZLOG_TOOLS_LOGS_ATTRIBUTE_VALUE_H

#include <variant>

#include "qzlog/logentry.h"

namespace qzlog_tool {

/// A text as it is stored, zero-terminated, in the code page of the library's settings.
struct StoredText {
  const char* text;
};

/// A Date, a Time or a Timestamp, in seconds since 1970-01-01 00:00:00 GMT.
struct StoredMoment {
  qz_AttributeType type;
  long long seconds;
};

/// The value of an attribute, by what its type holds; std::monostate for none.
using AttributeValue = std::variant<std::monostate, long long, double, bool, StoredText, StoredMoment>;

/// What an entry has for an attribute; nothing where it has none or its definition does not know it. Takes no memory. A
/// text is valid until the entry changes.
AttributeValue read_attribute(const qz_LOG_LogEntry& entry, const char* name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_ATTRIBUTE_VALUE_H
