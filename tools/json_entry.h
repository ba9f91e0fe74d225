#ifndef QZLOG_TOOLS_JSON_ENTRY_H
#define QZLOG_TOOLS_JSON_ENTRY_H

#include <simdjson.h>

#include <cstdint>
#include <string_view>

namespace qzlog_tool {

/// One entry as it is written in JSON; `level`, `time`, `attributes` and the choice of the message may be absent. Texts
/// belong to the parser and are valid until it reads the next line.
struct JsonEntry {
  std::string_view name;  ///< the entry's symbolic name; empty when `id` is a number
  std::uint32_t id = 0;
  std::uint32_t level = 0;
  const char* time = nullptr;  ///< null when absent
  bool use_default = false;
  std::uint32_t selector = 0;  ///< 0: the selector attribute chooses
  bool has_attributes = false;
  simdjson::dom::object attributes;
};

/// Reads lines of JSON, one entry each. Whatever is not an entry throws EntryError.
class JsonEntryParser {
 public:
  /// LineReader::kPaddingBytes readable bytes have to follow `line`.
  JsonEntry parse(std::string_view line);

 private:
  simdjson::dom::parser parser_;
};

/// What an error text calls a value: "a text", "an integer" ...
std::string_view kind_of(simdjson::dom::element value);

/// The integer `value` when it is one from 0 to `maximum`.
bool unsigned_value(simdjson::dom::element value, std::uint64_t maximum, std::uint32_t& number);

/// The zero-terminated characters of a text; throws EntryError when it holds U+0000.
const char* c_text(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_JSON_ENTRY_H
