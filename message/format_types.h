#ifndef QZLOG_MESSAGE_FORMAT_TYPES_H
#define QZLOG_MESSAGE_FORMAT_TYPES_H

#include "entry/logattrib.h"

namespace qzlog {

/// The formats of references in message templates, and which types of attributes each accepts.

/// How a reference is rendered, by its format character.
enum class MessageFormatKind : unsigned char {
  kUnknown,   // not an error: the reference is left out
  kText,      // s
  kCurrency,  // C
  kPercent,   // P
  kDate,      // D
  kTime,      // T
  kFloat,     // f
  kInteger    // d, u
};

constexpr MessageFormatKind message_format_kind(char format) {
  switch (format) {
    case 's':
      return MessageFormatKind::kText;
    case 'C':
      return MessageFormatKind::kCurrency;
    case 'P':
      return MessageFormatKind::kPercent;
    case 'D':
      return MessageFormatKind::kDate;
    case 'T':
      return MessageFormatKind::kTime;
    case 'f':
      return MessageFormatKind::kFloat;
    case 'd':
    case 'u':
      return MessageFormatKind::kInteger;
    default:
      return MessageFormatKind::kUnknown;
  }
}

/// The style of an argument of ICU's in a pattern, between its number and the closing brace.
constexpr const char* argument_style(MessageFormatKind kind) {
  switch (kind) {
    case MessageFormatKind::kCurrency:
      return ",number,currency";
    case MessageFormatKind::kPercent:
      return ",number,percent";
    case MessageFormatKind::kDate:
      return ",date";
    case MessageFormatKind::kTime:
      return ",time";
    case MessageFormatKind::kFloat:
      return ",number";
    case MessageFormatKind::kInteger:
      return ",number,##########";
    case MessageFormatKind::kText:
    case MessageFormatKind::kUnknown:
      break;
  }
  return "";
}

using AttributeTypeSet = unsigned;

template <typename Predicate>
constexpr AttributeTypeSet types_that(Predicate predicate) {
  AttributeTypeSet types = 0;
  for (unsigned code = TypeUnknown; code < 32; ++code) {
    if (predicate(static_cast<qz_AttributeType>(code))) types |= 1U << code;
  }
  return types;
}

constexpr bool is_text_attribute(qz_AttributeType type) {
  return is_unicode_string_attribute(type) || is_string_attribute(type);
}
constexpr bool is_number_attribute(qz_AttributeType type) {
  return is_integer_attribute(type) || is_float_attribute(type);
}

constexpr AttributeTypeSet accepted_types(MessageFormatKind kind) {
  switch (kind) {
    case MessageFormatKind::kText:
      return types_that(is_text_attribute);
    case MessageFormatKind::kCurrency:
    case MessageFormatKind::kPercent:
      return types_that(is_number_attribute);
    case MessageFormatKind::kDate:
    case MessageFormatKind::kTime:
      return types_that(is_time_attribute);
    case MessageFormatKind::kFloat:
      return types_that(is_float_attribute);
    case MessageFormatKind::kInteger:
      return types_that(is_integer_attribute);
    case MessageFormatKind::kUnknown:
      break;
  }
  return ~AttributeTypeSet{0};
}

// In the order of the enumeration.
inline constexpr AttributeTypeSet kAcceptedTypes[] = {
    accepted_types(MessageFormatKind::kUnknown),  accepted_types(MessageFormatKind::kText),
    accepted_types(MessageFormatKind::kCurrency), accepted_types(MessageFormatKind::kPercent),
    accepted_types(MessageFormatKind::kDate),     accepted_types(MessageFormatKind::kTime),
    accepted_types(MessageFormatKind::kFloat),    accepted_types(MessageFormatKind::kInteger)};

/// Definitions may give any 8-bit type; beyond the known ones only what accepts every type does.
inline bool accepts_type(MessageFormatKind kind, qz_AttributeType type) {
  const AttributeTypeSet accepted = kAcceptedTypes[static_cast<unsigned>(kind)];
  return type < 32 ? (accepted >> type & 1U) != 0 : accepted == ~AttributeTypeSet{0};
}

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_FORMAT_TYPES_H
