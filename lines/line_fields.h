#ifndef QZLOG_LINES_LINE_FIELDS_H
#define QZLOG_LINES_LINE_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "lines/json_value.h"
#include "lines/json_walk.h"
#include "lines/line_fault.h"

namespace qzlog {

struct LineAttribute {
  std::string_view name;  ///< a zero byte stands behind it
  JsonValue value;
  std::uint32_t place = 0;    ///< of the value in the line
  bool may_hold_nul = false;  ///< U+0000 inside the name or the text
};

/// The zero-terminated characters of a text; throws LineFault when it holds U+0000.
const char* c_text(std::string_view text, std::size_t place);

inline constexpr std::uint32_t kMaximumId = 0xFFFFFFFF;
inline constexpr std::uint32_t kMaximumLevel = 9;
inline constexpr std::uint32_t kMaximumSelector = 0xFFFFFFFF;

/// Where the name and the text of an attribute are put that is read from JSON.
struct AttributeTexts {
  std::string name;
  std::string text;
};

/// The attributes of an entry: read already, or still in the line's JSON, where they need no further memory.
class LineAttributes {
 public:
  LineAttributes() = default;
  explicit LineAttributes(std::span<const LineAttribute> attributes) : read_(attributes) {}
  /// `object` stands in the text that begins at `line`.
  LineAttributes(JsonPlace object, const char* line, AttributeTexts& texts)
      : object_(object), line_(line), texts_(&texts) {}

  bool is_read() const { return texts_ == nullptr; }
  /// All of them, when they are read.
  std::span<const LineAttribute> read() const { return read_; }

  /// Calls `visit` for each attribute, in their order. Of those that are not read yet a name and a text are valid
  /// during the call.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const LineAttribute& attribute : read_) visit(attribute);
    if (!is_read()) {
      object_.for_each_member(texts_->name, [&](std::string_view name, JsonPlace value) {
        visit(
            LineAttribute{name, value.value(texts_->text), static_cast<std::uint32_t>(value.address() - line_), true});
      });
    }
  }

 private:
  std::span<const LineAttribute> read_;
  JsonPlace object_;
  const char* line_ = nullptr;
  AttributeTexts* texts_ = nullptr;
};

/// One line as it is written in JSON; of an entry all but `id` may be absent. Texts belong to the parser and are valid
/// until it reads the next line; a zero byte stands behind each. A new one is all zeros.
struct LineFields {
  std::string_view symbolic_id;  ///< the entry's name in place of its ID; empty when `id` is a number
  const char* time = nullptr;    ///< null when absent
  std::uint32_t id = 0;
  std::uint32_t level = 0;
  std::uint32_t selector = 0;  ///< 0: the selector attribute chooses
  std::uint32_t id_place = 0;
  std::uint32_t time_place = 0;
  bool use_default = false;
  bool has_seq = false;
  bool has_bytes = false;
  bool is_held = false;  ///< the entries of `lost` were held back on purpose
  LineAttributes attributes;
  LineAttributes bytes;  ///< stored texts in base64, by the names of attributes
  JsonPlace lost;        ///< of a line that tells of entries that were not written, which has no `id`

  // What a writer adds. Empty when absent.
  std::uint64_t seq = 0;
  std::string_view writer;
  std::string_view written;
  std::string_view definitions;
  std::string_view name;
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_FIELDS_H
