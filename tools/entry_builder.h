#ifndef QZLOG_TOOLS_ENTRY_BUILDER_H
#define QZLOG_TOOLS_ENTRY_BUILDER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "qzlog/logentry.h"
#include "tools/code_page.h"
#include "tools/json_entry.h"

namespace qzlog_tool {

/// Entry IDs by symbolic name.
using EntryNames = std::unordered_map<std::string, std::uint32_t>;

/// Turns entries read from JSON into the library's. Whatever an entry cannot take throws EntryError; nothing is ever
/// cut or wrapped to fit.
class EntryBuilder {
 public:
  /// `names` is null where no definition source was given. Texts are handed on in `text_code_page`; null leaves them in
  /// UTF-8. Both have to outlive this object.
  EntryBuilder(const EntryNames* names, const CodePage* text_code_page)
      : names_(names), text_code_page_(text_code_page) {}

  /// Makes `entry` what `source` says, whatever it was before.
  void build(const JsonEntry& source, qz_LOG_LogEntry& entry);

 private:
  std::uint32_t find_id(const JsonEntry& source);
  void add_attributes(const JsonEntry& source, qz_LOG_LogEntry& entry);
  void add_text(std::string_view text, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry);
  void add_value(simdjson::dom::element value, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry);

  const EntryNames* names_;
  const CodePage* text_code_page_;
  std::string converted_;  // kept, so that not every text takes memory anew
  std::string name_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_ENTRY_BUILDER_H
