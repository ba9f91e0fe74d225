#ifndef QZLOG_LINES_ENTRY_BUILDER_H
#define QZLOG_LINES_ENTRY_BUILDER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "lines/kept_entry.h"
#include "lines/line_fields.h"
#include "lines/text_encoder.h"
#include "qzlog/entry_lines.h"
#include "qzlog/logentry.h"

namespace qzlog {

/// Turns what lines say into entries. Whatever an entry cannot take throws LineFault; nothing is ever cut or wrapped to
/// fit, but texts where the settings say so.
class EntryBuilder {
 public:
  /// Makes an entry, which throws where the library cannot.
  EntryBuilder();

  /// The entry that `source` describes, valid until the next call. `names` is null where no names are known.
  const qz_LOG_LogEntry& build(const LineFields& source);
  /// An entry without an ID, or whatever the last line that was not read quickly made of it.
  const qz_LOG_LogEntry& spare_entry() const { return kept_.back()->entry; }

 private:
  std::uint32_t find_id(const LineFields& source);
  KeptEntry& kept_entry(std::uint32_t id, const LineFields& source);
  void replace_values(const LineFields& source, KeptEntry& kept);
  void build_anew(std::uint32_t id, const LineFields& source, KeptEntry& kept);
  void add_bytes(const LineAttribute& attribute, qz_LOG_LogEntry& entry);
  void add_attributes(const LineFields& source, KeptEntry& kept);
  void add_value(const LineAttribute& source, const EntryAttribute& attribute, qz_LOG_LogEntry& entry);
  void add_text(const LineAttribute& source, const EntryAttribute& attribute, qz_LOG_LogEntry& entry);

  std::vector<std::unique_ptr<KeptEntry>> kept_;  // by the last bits of their IDs; behind them one for other lines
  TextEncoder encoder_;
  std::vector<std::string> names_in_bytes_;
  std::string bytes_;
  std::size_t place_ = 0;  // of the value at hand
};

}  // namespace qzlog

#endif  // QZLOG_LINES_ENTRY_BUILDER_H
