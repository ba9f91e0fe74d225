// Reads the input, behind its first byte, as an export of the journal: in pieces of that many bytes as in one.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/logs/journal_export.h"

namespace {

std::string lines_in(std::string_view bytes, std::size_t piece) {
  qzlog_tool::JournalExport journal;
  std::string lines;
  while (!bytes.empty()) {
    journal.take(bytes.substr(0, piece), lines);
    bytes.remove_prefix(std::min(piece, bytes.size()));
  }
  const bool is_whole = lines.empty() || lines.back() == '\n';
  if (!is_whole && !journal.is_inside_line()) std::abort();
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(bytes + 1, bytes + size);
  const std::string lines = lines_in(text, text.size() + 1);
  if (lines.size() > text.size()) std::abort();
  if (lines_in(text, std::size_t{bytes[0]} + 1) != lines) std::abort();
  return 0;
}
