#include "tools/manual/help_footer.h"

#include <sstream>

namespace qzlog_tool {

namespace {

constexpr std::string_view kIndentation = "  ";
constexpr std::string_view kExitStatus = "Exit status:";

void append(std::string& text, std::string_view more, const char* separator) {
  if (!text.empty()) text += separator;
  text += more;
}

class FooterParser {
 public:
  HelpFooter parse(std::string_view footer) {
    std::istringstream in{std::string(footer)};
    for (std::string line; std::getline(in, line);) take(line);
    return std::move(result_);
  }

 private:
  void take(const std::string& line) {
    if (line.empty()) {
      in_exit_status_ = false;
      continues_ = false;
    } else if (line.rfind(kIndentation, 0) == 0) {
      take_indented(std::string_view(line).substr(kIndentation.size()));
    } else {
      take_text(line);
    }
  }

  void take_indented(std::string_view line) {
    if (in_examples_) return append(result_.examples, line, "\n");
    if (!continues_ || !result_.notes.back().literal) result_.notes.push_back({true, ""});
    append(result_.notes.back().text, line, "\n");
    in_exit_status_ = false;
    continues_ = true;
  }

  // The exit status may take several lines, up to one that ends with a full stop.
  void take_text(const std::string& line) {
    in_examples_ = line == "Examples:" || line == "Example:";
    if (in_examples_) return;
    const bool begins_exit_status = line.rfind(kExitStatus, 0) == 0;
    if (begins_exit_status || (in_exit_status_ && result_.exit_status.back() != '.')) {
      in_exit_status_ = true;
      const std::size_t begin = begins_exit_status ? kExitStatus.size() + 1 : 0;
      return append(result_.exit_status, std::string_view(line).substr(std::min(begin, line.size())), " ");
    }
    in_exit_status_ = false;
    if (!continues_ || result_.notes.back().literal) result_.notes.push_back({false, ""});
    append(result_.notes.back().text, line, " ");
    continues_ = true;
  }

  HelpFooter result_;
  bool in_examples_ = false;
  bool in_exit_status_ = false;
  bool continues_ = false;  ///< the last note may get another line
};

}  // namespace

HelpFooter parse_help_footer(std::string_view footer) { return FooterParser().parse(footer); }

}  // namespace qzlog_tool
