#ifndef QZLOG_TOOLS_CATALOG_PO_FILE_H
#define QZLOG_TOOLS_CATALOG_PO_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/catalog/catalog_rules.h"

namespace qzlog_catalog {

/// Where a message comes from.
struct PoReference {
  std::string file;
  std::optional<std::size_t> line;

  friend bool operator==(const PoReference&, const PoReference&) = default;
};

/// A message of a PO file. Comments are lines, each ended by a newline.
struct PoMessage {
  std::optional<std::string> context;
  std::string source;
  std::string translation;  ///< empty: untranslated
  std::string comments;     ///< the translator's own
  std::string extracted_comments;
  std::vector<PoReference> references;
  std::optional<std::string> previous_context;
  std::optional<std::string> previous_source;  ///< what the translation was made from
  std::vector<std::string> formats;            ///< kinds of format strings that the text is, such as "c-format"
  bool fuzzy = false;
  bool obsolete = false;

  bool is_header() const { return !context && source.empty() && !obsolete; }
  /// Obsolete, with nothing that a translator has made of it: left out where the file is written.
  bool is_left_over() const { return obsolete && translation.empty(); }

  friend bool operator==(const PoMessage&, const PoMessage&) = default;
};

/// A PO file: its messages in their order, the header among them.
struct PoFile {
  std::vector<PoMessage> messages;
  std::vector<std::size_t> lines;  ///< where each message of a file that was read begins

  const PoMessage* header() const;
  /// The line of the message at that place, 0 where it is not known.
  std::size_t line_of(std::size_t index) const { return index < lines.size() ? lines[index] : 0; }
};

/// A field of a header's text; empty where it has none.
std::string header_field(const std::string& header, const char* field);
/// The header's text with the field set.
std::string with_header_field(const std::string& header, const char* field, const std::string& value);

/// Reads a PO file or template in UTF-8. `file_name` is what findings call it. None when anything is wrong with it; all
/// of that is in the findings. Throws CommandError (cannot run) when it cannot be read at all.
std::optional<PoFile> parse_po(std::string_view content, const std::string& file_name, Findings& findings);

/// The file's text, wrapped as gettext's programs wrap it; it reads as the same messages again. Throws CommandError
/// (findings) when it cannot be made, and as `parse_po` does.
std::string write_po(const PoFile& file);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_PO_FILE_H
