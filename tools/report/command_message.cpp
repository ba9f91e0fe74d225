#include "tools/report/command_message.h"

#include <iostream>
#include <string>

#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

void print_command_message(qzlog_compiler::Severity severity, std::string_view text) {
  std::cerr << "qzlog: ";
  if (severity == qzlog_compiler::Severity::kError) {
    write_as_it_is(std::cerr, error_label());
  } else {
    write_as_it_is(std::cerr, stderr_has_colour() ? coloured("warning:", TextStyle::kWarning) : "warning:");
  }
  std::string line(1, ' ');
  std::cerr << line.append(text).append(1, '\n');  // at once: standard error is not buffered
}

}  // namespace qzlog_tool
