#include "tools/count/count_command.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "tools/compiler/text/number_text.h"
#include "tools/count/calendar_day.h"
#include "tools/count/collect_counts.h"
#include "tools/count/count_options.h"
#include "tools/count/count_show.h"
#include "tools/count/counter_file.h"
#include "tools/count/merge_counts.h"
#include "tools/options/option_checks.h"
#include "tools/report/command_message.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

/// What the changing subcommands are told. Days and counts are texts that were checked.
struct ChangeOptions {
  std::string counter;
  std::string day;
  std::string key;
  std::string definitions;
  std::string count;
  std::string from;
  std::string to;
  bool interval = false;
};

constexpr const char* kCountFooter =
    R"(A counter DIR/NAME is kept in the file DIR/NAME.cnt: the number counted for each day and key. 'qzlog render --count' counts
messages by day and entry ID. 'qzlog count collect' counts the entries of a receiver, alone or together with others, and 'qzlog
count merge' makes a counter of what they have counted.

Examples:
  qzlog count show events.cnt --chart
  qzlog count add events --key 1001
  qzlog count set events --date 2026-11-21 --key 1001 --count 12
  qzlog count delete events --date 2026-11-21 --key 1001

'qzlog count COMMAND --help' shows more.)";

constexpr const char* kAddFooter =
    R"(The count becomes 1 where there was none; the file is made where there was none. After 4294967295 comes 0.

Examples:
  qzlog count add events --key 1001
  qzlog count add events --date 2026-11-21 --key DISK_FULL --definitions d.ldf
)";

constexpr const char* kSetFooter = R"(The file is made where there was none.

Example:
  qzlog count set events --date 2026-11-21 --key 1001 --count 12
)";

constexpr const char* kDeleteFooter =
    R"(With --date and --key one count is deleted; nothing happens where there is none.

With --from and --to the counts of all keys are deleted whose year, month and day each lie between those of the two dates.
That is a box and no interval: 2026-01-10 to 2026-03-20 means the 10th to the 20th of January, February and March, and
2025-12-25 to 2026-01-05 means nothing at all, as no month is both 12 or more and 1 or less. A box without a day is a warning. With
--interval all days from the one date to the other are meant, both included.

Examples:
  qzlog count delete events --date 2026-11-21 --key 1001
  qzlog count delete events --from 2025-01-01 --to 2025-12-31
  qzlog count delete events --from 2026-11-15 --to 2026-11-30
  qzlog count delete events --from 2025-12-25 --to 2026-01-05 --interval
)";

std::string check_count(const std::string& text) {
  return qzlog_compiler::parse_number(text, 0, std::numeric_limits<std::uint32_t>::max())
             ? ""
             : "'" + text + "' is no number from 0 to 4294967295";
}

int add(const ChangeOptions& options) {
  const CounterPath path = parse_counter_path(options.counter);
  const std::int32_t key = read_key(options.key, options.definitions);
  CounterFile file(path, MissingCounter::kCreate);
  file.increase(parse_day(options.day).value_or(local_today()), key, 1);
  file.close();
  return kExitSuccess;
}

int set(const ChangeOptions& options) {
  const CounterPath path = parse_counter_path(options.counter);
  const std::int32_t key = read_key(options.key, options.definitions);
  const auto count = qzlog_compiler::parse_number(options.count, 0, std::numeric_limits<std::uint32_t>::max());
  CounterFile file(path, MissingCounter::kCreate);
  file.set(parse_day(options.day).value(), key, static_cast<std::uint32_t>(count.value()));
  file.close();
  return kExitSuccess;
}

int remove_one(const ChangeOptions& options, const CounterPath& path) {
  const std::int32_t key = read_key(options.key, options.definitions);
  CounterFile file(path, MissingCounter::kRefuse);
  file.remove(parse_day(options.day).value(), key);
  file.close();
  return kExitSuccess;
}

void warn_of_empty_box(const ChangeOptions& options) {
  print_command_message(qzlog_compiler::Severity::kWarning, "nothing is deleted in '" +
                                                                parse_counter_path(options.counter).file +
                                                                "': no day has its year, "
                                                                "month and day each between those of --from " +
                                                                options.from + " and --to " + options.to +
                                                                "; --interval deletes the days from one to the other");
}

int remove(const ChangeOptions& options) {
  const CounterPath path = parse_counter_path(options.counter);
  if (!options.day.empty()) return remove_one(options, path);
  if (options.from.empty()) {
    throw CommandError(kExitCannotRun, "give --date and --key, or --from and --to, to say what is deleted");
  }
  refuse_reversed_days(options.from, options.to);
  const DayBox days = {parse_day(options.from).value(), parse_day(options.to).value()};
  CounterFile file(path, MissingCounter::kRefuse);
  if (options.interval) {
    file.remove_interval(days.from, days.to);
  } else {
    if (days.is_empty()) warn_of_empty_box(options);
    file.remove_box(days);
  }
  file.close();
  return kExitSuccess;
}

CLI::App* add_change(CLI::App& count_command, const char* name, const char* help, const char* footer,
                     ChangeOptions& options) {
  CLI::App* const command = count_command.add_subcommand(name, help);
  command->footer(footer);
  command->add_option("COUNTER", options.counter, "The counter; the suffix .cnt may be given")
      ->type_name("DIR/NAME")
      ->required();
  return command;
}

CLI::Option* add_key_option(CLI::App& command, ChangeOptions& options) {
  command
      .add_option("--definitions", options.definitions,
                  "Definitions, compiled or a source, that say which key a name means")
      ->type_name("STD.ldf|STD.yaml")
      ->check(check_not_empty);
  return command.add_option("--key", options.key, "The key: a number, or an entry's name")->type_name("N|NAME");
}

void add_add(CLI::App& count_command, int& exit_status) {
  const auto options = std::make_shared<ChangeOptions>();
  CLI::App* const command =
      add_change(count_command, "add", "Add 1 to the count of a day and key", kAddFooter, *options);
  add_day_option(*command, "--date", options->day, "The day; default: today");
  add_key_option(*command, *options)->required();
  command->callback([options, &exit_status] { exit_status = add(*options); });
}

void add_set(CLI::App& count_command, int& exit_status) {
  const auto options = std::make_shared<ChangeOptions>();
  CLI::App* const command = add_change(count_command, "set", "Set the count of a day and key", kSetFooter, *options);
  add_day_option(*command, "--date", options->day, "The day")->required();
  add_key_option(*command, *options)->required();
  command->add_option("--count", options->count, "The count")->type_name("N")->check(check_count)->required();
  command->callback([options, &exit_status] { exit_status = set(*options); });
}

void add_delete(CLI::App& count_command, int& exit_status) {
  const auto options = std::make_shared<ChangeOptions>();
  CLI::App* const command = add_change(
      count_command, "delete", "Delete the count of a day and key, or of a box of days", kDeleteFooter, *options);
  CLI::Option* const day = add_day_option(*command, "--date", options->day, "The day of the count to delete");
  CLI::Option* const key = add_key_option(*command, *options)->needs(day);
  day->needs(key);
  CLI::Option* const from =
      add_day_option(*command, "--from", options->from, "The lower corner of the box")->excludes(day);
  from->needs(add_day_option(*command, "--to", options->to, "The upper corner of the box")->needs(from));
  command->add_flag("--interval", options->interval, "Delete all days from --from to --to, and not a box")->needs(from);
  command->callback([options, &exit_status] { exit_status = remove(*options); });
}

}  // namespace

void add_count_command(CLI::App& app, int& exit_status) {
  CLI::App* const command = app.add_subcommand("count", "Show and change what counter files hold");
  command->footer(kCountFooter);
  command->require_subcommand(1);
  add_count_show(*command, exit_status);
  add_add(*command, exit_status);
  add_set(*command, exit_status);
  add_delete(*command, exit_status);
  add_collect_counts(*command, exit_status);
  add_merge_counts(*command, exit_status);
}

}  // namespace qzlog_tool
