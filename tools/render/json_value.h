#ifndef QZLOG_TOOLS_RENDER_JSON_VALUE_H
#define QZLOG_TOOLS_RENDER_JSON_VALUE_H

#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qzlog_tool {

enum class JsonKind : std::uint8_t {
  kNull,
  kBool,
  kInteger,
  kLargeInteger,  // above INT64_MAX
  kFloat,
  kText,
  kArray,
  kObject,
};

/// What an error text calls a value: "a text", "an integer" ...
std::string_view kind_name(JsonKind kind);

/// A value as it stands in JSON, without what an array or an object holds.
struct JsonValue {
  JsonKind kind = JsonKind::kNull;
  union {
    std::int64_t integer = 0;
    std::uint64_t large_integer;
    double number;  ///< kFloat
    bool truth;
  };
  std::string_view text;  ///< a zero byte stands behind it
};

struct JsonAttribute {
  std::string_view name;  ///< a zero byte stands behind it
  JsonValue value;
  bool may_hold_nul = false;  ///< U+0000 inside the name or the text
};

/// The kind of a value of the general parser.
JsonKind kind_of(simdjson::dom::element value);

/// The zero-terminated characters of a text; throws EntryError when it holds U+0000.
const char* c_text(std::string_view text);

inline constexpr std::uint32_t kMaximumId = 0xFFFFFFFF;
inline constexpr std::uint32_t kMaximumLevel = 9;
inline constexpr std::uint32_t kMaximumSelector = 0xFFFFFFFF;

/// The attributes of an entry: read already, or still in the general parser, where they need no further memory.
class JsonAttributes {
 public:
  JsonAttributes() = default;
  explicit JsonAttributes(std::span<const JsonAttribute> attributes) : read_(attributes) {}
  explicit JsonAttributes(simdjson::dom::object attributes) : unread_(attributes), is_read_(false) {}

  std::size_t size() const { return is_read_ ? read_.size() : unread_.size(); }

  bool is_read() const { return is_read_; }
  /// All of them, when they are read.
  std::span<const JsonAttribute> read() const { return read_; }

  /// Calls `visit` for each attribute, in their order. Texts are valid until the parser reads the next line.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const JsonAttribute& attribute : read_) visit(attribute);
    if (is_read_) return;
    for (const simdjson::dom::key_value_pair field : unread_) visit(attribute_of(field));
  }

 private:
  static JsonAttribute attribute_of(simdjson::dom::key_value_pair field);

  std::span<const JsonAttribute> read_;
  simdjson::dom::object unread_;
  bool is_read_ = true;
};

/// One entry as it is written in JSON; `level`, `time`, `attributes` and the choice of the message may be absent. Texts
/// belong to the parser and are valid until it reads the next line.
struct JsonEntry {
  std::string_view name;  ///< the entry's symbolic name; empty when `id` is a number
  std::uint32_t id = 0;
  std::uint32_t level = 0;
  const char* time = nullptr;  ///< null when absent
  bool use_default = false;
  std::uint32_t selector = 0;  ///< 0: the selector attribute chooses
  JsonAttributes attributes;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_JSON_VALUE_H
