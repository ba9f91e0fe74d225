#ifndef QZLOG_TOOLS_MANUAL_HELP_FOOTER_H
#define QZLOG_TOOLS_MANUAL_HELP_FOOTER_H

#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// A paragraph, its lines joined, or indented lines that stand as they are.
struct HelpBlock {
  bool literal = false;
  std::string text;
};

/// What stands below the options on a help page, taken apart for manual pages: a paragraph that begins with
/// "Exit status:", indented lines below "Examples:" or "Example:", and everything else.
struct HelpFooter {
  std::vector<HelpBlock> notes;
  std::string exit_status;
  std::string examples;  ///< without the indentation
};

HelpFooter parse_help_footer(std::string_view footer);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_HELP_FOOTER_H
