#include "tools/logs/attribute_value.h"

namespace qzlog_tool {

namespace {

/// Reads a value that is there by the member that is for its type.
template <class Value>
Value read(const qz_LOG_LogEntry& entry, const char* name, bool (qz_LOG_LogEntry::*get)(const char*, Value&) const) {
  Value value{};
  (entry.*get)(name, value);
  return value;
}

template <class Value>
AttributeValue integer(const qz_LOG_LogEntry& entry, const char* name,
                       bool (qz_LOG_LogEntry::*get)(const char*, Value&) const) {
  return static_cast<long long>(read(entry, name, get));
}

AttributeValue read_text(const qz_LOG_LogEntry& entry, const char* name, qz_AttributeType type) {
  if (type <= TypeChar2K) return StoredText{read<const char*>(entry, name, &qz_LOG_LogEntry::GetAttribStr)};
  return StoredText{read<const char*>(entry, name, &qz_LOG_LogEntry::GetAttribMBStr)};
}

}  // namespace

AttributeValue read_attribute(const qz_LOG_LogEntry& entry, const char* name) {
  qz_AttributeType type = TypeUnknown;
  if (entry.CheckAttribute(name, type) != 0) return {};
  switch (type) {
    case TypeBool:
      return read<bool>(entry, name, &qz_LOG_LogEntry::GetAttribBool);
    case TypeUInt1:
      return integer<unsigned char>(entry, name, &qz_LOG_LogEntry::GetAttrib1u);
    case TypeSInt1:  // a `char` has a sign on some hosts only
      return static_cast<long long>(static_cast<signed char>(read<char>(entry, name, &qz_LOG_LogEntry::GetAttrib1)));
    case TypeUInt2:
      return integer<unsigned short>(entry, name, &qz_LOG_LogEntry::GetAttrib2u);
    case TypeSInt2:
      return integer<short>(entry, name, &qz_LOG_LogEntry::GetAttrib2);
    case TypeUInt4:
      return integer<unsigned>(entry, name, &qz_LOG_LogEntry::GetAttrib4u);
    case TypeSInt4:
      return integer<int>(entry, name, &qz_LOG_LogEntry::GetAttrib4);
    case TypeFloat:
      return read<double>(entry, name, &qz_LOG_LogEntry::GetAttribFloat8);
    case TypeDate:
    case TypeTime:
    case TypeTimestamp:
      return StoredMoment{type, read<qz_Time>(entry, name, &qz_LOG_LogEntry::GetAttribTime).unix_seconds()};
    case TypeUnknown:
    case TypeGUID:  // nothing can be put into it
      return {};
    default:
      return read_text(entry, name, type);
  }
}

}  // namespace qzlog_tool
