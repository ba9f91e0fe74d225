#ifndef QZLOG_LINES_VALUE_TEXT_H
#define QZLOG_LINES_VALUE_TEXT_H

#include <cmath>
#include <cstddef>
#include <cstring>

#include "entry/logattrib.h"
#include "entry/ustring.h"
#include "foundation/itoa.h"
#include "foundation/sha256.h"
#include "foundation/shortest_float.h"
#include "lines/moment_text.h"
#include "qzlog/qz_string.h"
#include "qzlog/qz_time.h"

/// Stored values as lines of JSON show them. What writes does so to room that there is, and returns the end.
namespace qzlog {

struct StoredText {
  const char* text;
  std::size_t length;
};

/// A stored value of a text type.
inline StoredText text_of(const _qz_LOG_type_base& value) {
  if (is_unicode_string_attribute(static_cast<qz_AttributeType>(value.get_type()))) {
    const auto& text = value_as<_qz_LOG_ustring>(value);
    return {text.text(), text.length};
  }
  const auto& text = value_as<qz_String>(value);
  return {text.c_str(), text.length()};
}

inline bool is_text(const _qz_LOG_type_base& value) {
  const auto type = static_cast<qz_AttributeType>(value.get_type());
  return is_string_attribute(type) || is_unicode_string_attribute(type);
}

template <std::size_t size>
char* write_literal(char* target, const char (&literal)[size]) {
  std::memcpy(target, literal, size - 1);
  return target + size - 1;
}

inline char* write_quoted_moment(char* target, long long unix_seconds) {
  *target = '"';
  return write_literal(write_moment(target + 1, unix_seconds), "Z\"");
}

inline char* write_float(char* target, double value) {
  if (std::isfinite(value)) [[likely]]
    return write_shortest_float(target, value);
  if (std::isnan(value)) return write_literal(target, "\"NaN\"");
  return value > 0 ? write_literal(target, "\"Infinity\"") : write_literal(target, "\"-Infinity\"");
}

/// A value that is no text.
inline char* write_short_value(char* target, const _qz_LOG_type_base& value) {
  switch (value.get_type()) {
    case TypeBool:
      return value_as<bool>(value) ? write_literal(target, "true") : write_literal(target, "false");
    case TypeUInt1:
      return write_number(target, unsigned{value_as<unsigned char>(value)});
    case TypeUInt2:
      return write_number(target, unsigned{value_as<unsigned short>(value)});
    case TypeUInt4:
      return write_number(target, value_as<unsigned>(value));
    case TypeSInt1:
      return write_number(target, int{static_cast<signed char>(value_as<char>(value))});
    case TypeSInt2:
      return write_number(target, int{value_as<short>(value)});
    case TypeSInt4:
      return write_number(target, value_as<int>(value));
    case TypeFloat:
      return write_float(target, value_as<double>(value));
    default:
      return write_quoted_moment(target, value_as<qz_Time>(value).unix_seconds());
  }
}
inline constexpr std::size_t kMaxShortValue = kMaxShortestFloat;
static_assert(kMaxShortValue >= kMomentText + 3);

/// What stands for a text that is not to be shown. The digits say whether texts are the same, and little else.
inline char* write_hash(char* target, const StoredText& stored) {
  Sha256 hash;
  hash.add(stored.text, stored.length);
  target = write_literal(target, "\"sha256:");
  write_short_digest(hash.digest(), target);
  target[kShortDigestDigits] = '"';
  return target + kShortDigestDigits + 1;
}
inline constexpr std::size_t kMaxHash = kShortDigestDigits + 16;

}  // namespace qzlog

#endif  // QZLOG_LINES_VALUE_TEXT_H
