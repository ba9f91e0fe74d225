#ifndef QZLOG_TOOLS_MANUAL_HELP_LAYOUT_H
#define QZLOG_TOOLS_MANUAL_HELP_LAYOUT_H

#include <CLI/CLI.hpp>
#include <string>

namespace qzlog_tool {

/// Help pages in 80 columns: what stands beside options and commands, and paragraphs, are broken there. Lines that are
/// indented stand as they are.
class HelpLayout : public CLI::Formatter {
 public:
  std::string make_description(const CLI::App* app) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_subcommand(const CLI::App* command) const override;
  std::string make_footer(const CLI::App* app) const override;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_HELP_LAYOUT_H
