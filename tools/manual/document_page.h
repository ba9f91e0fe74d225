#ifndef QZLOG_TOOLS_MANUAL_DOCUMENT_PAGE_H
#define QZLOG_TOOLS_MANUAL_DOCUMENT_PAGE_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/command_tree.h"
#include "tools/manual/environment_rows.h"

namespace qzlog_tool {

/// A page of the documentation that is a manual page as well.
struct DocumentPage {
  std::string_view document;  ///< "counter-file.md"
  std::string_view name;
  int section;
  std::string_view description;
  std::string_view variables;  ///< those of the environment that matter to a format, parted by blanks

  std::string file_name() const { return std::string(name) + '.' + std::to_string(section); }
};

std::span<const DocumentPage> all_document_pages();

/// The manual page made of a document's text. `root` is the command, of which the exit statuses are.
std::string document_page(const DocumentPage& page, std::string_view markdown,
                          const std::vector<EnvironmentRow>& environment, const CommandNode& root,
                          std::string_view version);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_DOCUMENT_PAGE_H
