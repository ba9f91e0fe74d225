#include "tools/manual/help_layout.h"

#include <cstddef>
#include <sstream>
#include <string_view>

namespace qzlog_tool {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::string_view kExitStatus = "Exit status:";

/// The words of a paragraph in lines of at most so many columns, the last one without a line feed.
std::string filled(const std::string& text, std::size_t columns) {
  std::istringstream words(text);
  std::string lines;
  std::size_t width = 0;
  for (std::string word; words >> word;) {
    const bool fits = width + 1 + word.size() <= columns;
    if (!lines.empty()) lines += fits ? ' ' : '\n';
    width = lines.empty() || !fits ? word.size() : width + 1 + word.size();
    lines += word;
  }
  return lines;
}

/// A footer's paragraphs filled. One ends at an empty or indented line, and where an exit status begins.
class Footer {
 public:
  std::string fill(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      const bool is_prose = !line.empty() && line.front() != ' ';
      if (!is_prose || line.starts_with(kExitStatus)) end_paragraph();
      if (is_prose) {
        paragraph_.append(line) += ' ';
      } else {
        result_.append(line) += '\n';
      }
    }
    end_paragraph();
    return std::move(result_);
  }

 private:
  void end_paragraph() {
    if (!paragraph_.empty()) result_.append(filled(paragraph_, kColumns)) += '\n';
    paragraph_.clear();
  }

  std::string paragraph_;
  std::string result_;
};

}  // namespace

std::string HelpLayout::make_description(const CLI::App* app) const {
  return filled(CLI::Formatter::make_description(app), kColumns) + '\n';
}

std::string HelpLayout::make_option_desc(const CLI::Option* option) const {
  return filled(CLI::Formatter::make_option_desc(option), kColumns - column_width_);
}

std::string HelpLayout::make_subcommand(const CLI::App* command) const {
  std::ostringstream out;
  CLI::detail::format_help(out, command->get_name(), filled(command->get_description(), kColumns - column_width_),
                           column_width_);
  return out.str();
}

std::string HelpLayout::make_footer(const CLI::App* app) const { return Footer().fill(app->get_footer()) + '\n'; }

}  // namespace qzlog_tool
