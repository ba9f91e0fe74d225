#include <clocale>
#include <string>
#include <vector>

#include "tools/command_line.h"
#include "tools/system/out_of_memory.h"
#include "tools/system/process_start.h"
#include "tools/system/terminal_text.h"

namespace {

// Templates are stored in UTF-8, and ICU reads them in the character set of the process's locale.
void use_utf8() {
  for (const char* const name : {"C.UTF-8", "en_US.UTF-8", ""}) {
    if (std::setlocale(LC_CTYPE, name) != nullptr) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  qzlog_tool::prepare_process();
  qzlog_tool::end_where_memory_runs_out();
  qzlog_tool::read_time_zone();
  use_utf8();
  const qzlog_tool::TerminalGuard guard;
  // A caller may leave out even the program's name.
  return qzlog_tool::run_command_line(argc > 1 ? std::vector<std::string>(argv + 1, argv + argc)
                                               : std::vector<std::string>());
}
