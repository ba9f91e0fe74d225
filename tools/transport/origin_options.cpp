#include "tools/transport/origin_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>

#include "tools/compiler/text/utf8_text.h"
#include "tools/options/option_heading.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kLongestGroup = 64;

std::string check_start(const std::string& text) {
  if (!text.empty() && parse_start(text, process_clock(std::time(nullptr)))) return "";
  return qzlog_compiler::quoted(text) + " is no start; write " + kStartForms;
}

// What every receiver takes as a name.
std::string check_group(const std::string& text) {
  const bool is_group =
      !text.empty() && text.size() <= kLongestGroup && std::all_of(text.begin(), text.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '-' || character == '_';
      });
  return is_group ? "" : qzlog_compiler::quoted(text) + " is no group: up to 64 letters, digits, '-' and '_'";
}

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

void refuse_without_receiver(const OriginOptions& options) {
  if (!options.start.empty()) refuse("--start is for receivers: give --from with a URL");
  if (!options.group.empty()) refuse("--group is for receivers: give --from with a URL");
  if (options.receiver.is_given()) {
    refuse("--ca, --credentials, --option and --plugins are for receivers: give --from with a URL");
  }
}

}  // namespace

void add_origin_options(CLI::App& command, OriginOptions& options) {
  const OptionHeading heading(command, "Entries from elsewhere");
  command.add_option("--from", options.from, "Read from a receiver, the journal, or files with messages of syslog")
      ->type_name("URL");
  command.add_option("--start", options.start, "Begin there: beginning, now, sequence=N or a TIME")
      ->type_name("START")
      ->check(check_start);
  command.add_option("--group", options.group, "Share the entries with all readers of this name")
      ->type_name("NAME")
      ->check(check_group);
  add_receiver_options(command, options.receiver);
}

LogOrigin read_origin(const OriginOptions& options, const std::vector<std::string>& operands) {
  LogOrigin origin = log_origin(options.from);
  if (origin.kind != LogOrigin::Kind::kReceiver) refuse_without_receiver(options);
  const bool has_operands = operands != std::vector<std::string>{"-"};
  if (!origin.has_files() && has_operands) {
    refuse("--from " + (origin.url ? origin.url->text() : options.from) + " takes no files: leave out " +
           qzlog_compiler::quoted(operands.front()));
  }
  return origin;
}

}  // namespace qzlog_tool
