#ifndef QZLOG_TOOLS_RENDER_JSON_ENTRY_H
#define QZLOG_TOOLS_RENDER_JSON_ENTRY_H

#include <simdjson.h>

#include <string_view>

#include "tools/render/json_value.h"
#include "tools/render/plain_entry.h"

namespace qzlog_tool {

/// Reads lines of JSON, one entry each. Whatever is not an entry throws EntryError.
class JsonEntryParser {
 public:
  JsonEntryParser();

  /// LineReader::kPaddingBytes readable bytes have to follow `line`.
  JsonEntry parse(std::string_view line);
  /// The same, without the short cut for plain lines.
  JsonEntry parse_any(std::string_view line);

 private:
  PlainEntryScanner plain_;
  simdjson::dom::parser parser_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_JSON_ENTRY_H
