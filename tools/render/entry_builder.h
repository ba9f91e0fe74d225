#ifndef QZLOG_TOOLS_RENDER_ENTRY_BUILDER_H
#define QZLOG_TOOLS_RENDER_ENTRY_BUILDER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/logentry.h"
#include "tools/definitions/definition_files.h"
#include "tools/options/output_code_page.h"
#include "tools/render/json_value.h"
#include "tools/render/kept_entry.h"

namespace qzlog_tool {

/// Turns entries read from JSON into the library's. Whatever an entry cannot take throws EntryError; nothing is ever
/// cut or wrapped to fit. The definitions must not change while it lives.
class EntryBuilder {
 public:
  /// `names` is null where no definition source was given. Texts are handed on in `text_code_page`; null leaves them in
  /// UTF-8. Both have to outlive this object. Makes an entry, which throws where the library cannot.
  EntryBuilder(const EntryNames* names, const CodePage* text_code_page);

  /// The entry that `source` describes, valid until the next call.
  const qz_LOG_LogEntry& build(const JsonEntry& source);

 private:
  std::uint32_t find_id(const JsonEntry& source);
  KeptEntry& kept_entry(std::uint32_t id, const JsonEntry& source);
  void replace_values(const JsonEntry& source, KeptEntry& kept);
  void build_anew(std::uint32_t id, const JsonEntry& source, KeptEntry& kept);
  void add_attributes(const JsonEntry& source, KeptEntry& kept);
  void add_value(const JsonAttribute& attribute, qz_AttributeType type, qz_LOG_LogEntry& entry);
  void add_text(std::string_view text, qz_AttributeType type, const char* name, qz_LOG_LogEntry& entry);

  const EntryNames* names_;
  const CodePage* text_code_page_;
  std::vector<std::unique_ptr<KeptEntry>> kept_;  // by the last bits of their IDs; behind them one for other lines
  std::string converted_;                         // kept, so that not every text takes memory anew
  std::string name_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ENTRY_BUILDER_H
