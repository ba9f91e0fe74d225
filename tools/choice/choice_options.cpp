#include "tools/choice/choice_options.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <ctime>
#include <limits>

#include "tools/choice/number_ranges.h"
#include "tools/choice/reader_moment.h"
#include "tools/compiler/text/number_text.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/options/option_checks.h"
#include "tools/options/option_heading.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;

std::string check_moment(const std::string& text) {
  if (find_moment(text, process_clock(std::time(nullptr)))) return "";
  return quoted(text) + " is no time; times are " + std::string(kMomentForms);
}

std::string check_ids(const std::string& text) {
  if (parse_ranges(text, std::numeric_limits<std::uint32_t>::max())) return "";
  return quoted(text) + " is no ID, such as 1001, and no list of IDs and ranges, such as 1001,0x400..0x4FF,9000..";
}

std::string check_level(const std::string& text) {
  return parse_range(text, 9)
             ? ""
             : quoted(text) + " is no level from 0 to 9 and no range of levels, such as 5..9, 5.. or ..3";
}

std::string check_expression(const std::string& text) {
  return text.empty() ? "the expression is empty; one is 'Free < 10 and exists(Pool)'" : "";
}

std::string check_line_count(const std::string& text) {
  constexpr std::int64_t kMost = 1'000'000'000;
  return qzlog_compiler::parse_number(text, 1, kMost) ? "" : quoted(text) + " is no number from 1 to 1000000000";
}

/// An option that may be given several times, each time with one value.
CLI::Option* add_list(CLI::App& command, const char* name, std::vector<std::string>& values, const char* help) {
  return command.add_option(name, values, help)->allow_extra_args(false);
}

}  // namespace

void add_choice_options(CLI::App& command, ChoiceOptions& options, MaskOption mask) {
  const OptionHeading heading(command, "Choosing entries");
  command.add_option("--since", options.since, "Only entries of this time and later")
      ->type_name("TIME")
      ->check(check_moment);
  command.add_option("--until", options.until, "Only entries of this time and earlier")
      ->type_name("TIME")
      ->check(check_moment);
  add_list(command, "--id", options.ids, "Only entries with these IDs: 1001,1003..1009")
      ->type_name("IDS")
      ->check(check_ids);
  add_list(command, "--name", options.names, "Only events of this name; * and ? are wildcards")
      ->type_name("EVENT")
      ->check(check_not_empty);
  command.add_option("--level", options.level, "Only entries of these levels: 5, 5..9, 5.., ..3")
      ->type_name("LEVELS")
      ->check(check_level);
  if (mask == MaskOption::kAdd) {
    command.add_option("--mask", options.mask, "Only entries whose property mask shares a bit")
        ->type_name("MASK")
        ->check(check_mask);
  }
  add_list(command, "--writer", options.writers, "Only lines of this writer (HOST/PID/START); * and ? are wildcards")
      ->type_name("WRITER")
      ->check(check_not_empty);
  command.add_option("--where", options.where, "Only entries for which this holds: 'Free < 10'")
      ->type_name("EXPRESSION")
      ->check(check_expression);
  CLI::Option* const head = command.add_option("--head", options.head, "Only the first so many of them")
                                ->type_name("N")
                                ->check(check_line_count);
  command.add_option("--tail", options.tail, "Only the last so many of them, of at most 32 MiB")
      ->type_name("N")
      ->check(check_line_count)
      ->excludes(head);
  command.add_flag("--unique", options.unique, "Each line once, by its writer and number");
}

}  // namespace qzlog_tool
