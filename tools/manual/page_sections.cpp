#include "tools/manual/page_sections.h"

#include <algorithm>

#include "tools/manual/roff.h"
#include "tools/manual/roff_blocks.h"

namespace qzlog_tool {

namespace {

/// "0 success; 1 findings or bad input" is two: each begins with a digit and a blank, behind "; " or ", ".
std::vector<std::string> separate_statuses(const std::string& text) {
  std::vector<std::string> statuses;
  std::size_t begin = 0;
  for (std::size_t i = 0; i + 3 < text.size(); ++i) {
    const bool ends_one = (text[i] == ';' || text[i] == ',') && text[i + 1] == ' ';
    if (!ends_one || text[i + 2] < '0' || text[i + 2] > '9' || text[i + 3] != ' ') continue;
    statuses.push_back(text.substr(begin, i - begin));
    begin = i + 2;
  }
  statuses.push_back(text.substr(begin));
  return statuses;
}

}  // namespace

std::string page_beginning(std::string_view name, int section, std::string_view volume, std::string_view description,
                           std::string_view version) {
  return ".TH " + roff_text(in_capitals(name)) + ' ' + std::to_string(section) + " \"\" \"qzlog " + roff_text(version) +
         "\" \"" + roff_text(volume) + "\"\n.SH NAME\n" + roff_text(name) + " \\- " + roff_text(description) + '\n';
}

std::string environment_section(const std::vector<EnvironmentRow>& rows) {
  std::string roff = ".SH ENVIRONMENT\n";
  for (const EnvironmentRow& row : rows) {
    roff += ".TP\n" + roff_spans(row.variables) + '\n' + roff_paragraph(row.effect) + '\n';
    roff += roff_paragraph("Read " + row.when + ".") + '\n';
  }
  return roff;
}

std::string exit_status_list(const std::string& text) {
  std::string roff;
  for (const std::string& status : separate_statuses(text)) {
    const std::size_t blank = std::min(status.find(' '), status.size());
    if (blank != 1) return roff + roff_filled(roff_text(status)) + '\n';
    roff += ".TP\n" + roff_bold(status.substr(0, 1)) + '\n' + roff_sentence(status.substr(2)) + '\n';
  }
  return roff;
}

std::string page_reference(std::string_view name, int section) {
  return roff_bold(name) + '(' + std::to_string(section) + ')';
}

}  // namespace qzlog_tool
