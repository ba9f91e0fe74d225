// fault_run [OPTION...] -- COMMAND [ARGUMENT...]: runs a command and makes one of its system calls go wrong. It needs
// libqzlog_faults.so preloaded in the command, which says where counting begins.
//
//   --calls NAMES   the system calls that are counted, a list separated by commas; --list shows the names
//   --at N          the N-th goes wrong; without, none does
//   --error NAME    with this error (EIO, ENOSPC, EINTR, EMFILE, EAGAIN, ENOMEM); "short" for a short transfer
//   --repeated      every later one of its group goes wrong too
//   --marked        counts only between qz_faults_begin() and qz_faults_end()
//   --timeout MS    after which the command is killed
//   --report FILE   where to write what happened, a line for each thing
//   --closed N...   standard descriptors (such as 02) that are closed in the command
//
// Exit status: 0 when the command ran, whatever came of it; 2 wrong usage; 3 processes cannot be traced here.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/faults/call_groups.h"
#include "tests/faults/traced_run.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kCannotTrace = 3;

struct Options {
  qz_fault::RunOptions run;
  std::string report;
  std::string closed;
  char** command = nullptr;
};

int error_number(const std::string& name) {
  static const std::map<std::string, int> errors = {{"EIO", EIO},       {"ENOSPC", ENOSPC}, {"EINTR", EINTR},
                                                    {"EMFILE", EMFILE}, {"EAGAIN", EAGAIN}, {"ENOMEM", ENOMEM},
                                                    {"short", 0}};
  const auto found = errors.find(name);
  if (found == errors.end()) throw std::invalid_argument("no such error: " + name);
  return found->second;
}

void take_value(Options& options, const std::string& name, const std::string& value) {
  if (name == "--calls") {
    options.run.groups = qz_fault::find_call_groups(value);
  } else if (name == "--at") {
    options.run.fault.nth = std::stol(value);
  } else if (name == "--error") {
    options.run.fault.error = error_number(value);
  } else if (name == "--timeout") {
    options.run.timeout_ms = std::stoi(value);
  } else if (name == "--report") {
    options.report = value;
  } else if (name == "--closed") {
    options.closed = value;
  } else {
    throw std::invalid_argument("unknown option: " + name);
  }
}

Options read_options(char** argument) {
  Options options;
  for (; *argument != nullptr && std::string(*argument) != "--"; ++argument) {
    const std::string name = *argument;
    if (name == "--repeated") {
      options.run.fault.repeated = true;
    } else if (name == "--marked") {
      options.run.marked = true;
    } else if (argument[1] == nullptr) {
      throw std::invalid_argument("no value for: " + name);
    } else {
      take_value(options, name, *++argument);
    }
  }
  if (*argument == nullptr || argument[1] == nullptr) throw std::invalid_argument("no command");
  options.command = argument + 1;
  return options;
}

void write_report(const qz_fault::RunReport& report, const std::string& path) {
  std::ofstream file;
  if (!path.empty()) file.open(path);
  std::ostream& out = path.empty() ? std::cerr : file;
  out << "end " << report.kind << ' ' << report.number << "\ncalls " << report.calls << "\nhit " << report.hit
      << "\nleft_running " << report.left_running << '\n';
  for (const std::string& call : report.sequence) out << "call " << call << '\n';
  for (const std::string& frame : report.frames) out << "frame " << frame << '\n';
}

int list_names() {
  std::set<std::string> names;
  for (const qz_fault::CallGroup& group : qz_fault::call_groups()) names.insert(group.name);
  for (const std::string& name : names) std::cout << name << '\n';
  return 0;
}

}  // namespace

int main(int, char** argv) {
  if (argv[1] != nullptr && std::string(argv[1]) == "--list") return list_names();
  try {
    const Options options = read_options(argv + 1);
    // The report is written to a file that none of them is.
    for (const char digit : options.closed) close(digit - '0');
    qz_fault::TracedRun run(options.run);
    write_report(run.run(options.command), options.report);
  } catch (const std::system_error& error) {
    std::cerr << "fault_run: " << error.what() << '\n';
    return kCannotTrace;
  } catch (const std::exception& error) {
    std::cerr << "fault_run: " << error.what() << '\n';
    return kWrongUsage;
  }
  return 0;
}
