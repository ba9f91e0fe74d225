#include "tools/count/count_show.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/count/bar_chart.h"
#include "tools/count/count_options.h"
#include "tools/count/count_report.h"
#include "tools/count/counter_file.h"
#include "tools/count/counter_reader.h"
#include "tools/count/entry_counting.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/output_file.h"
#include "tools/system/standard_input.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;

struct ShowOptions {
  std::string file;
  std::string definitions;
  std::string from;
  std::string to;
  bool json = false;
  bool chart = false;
};

constexpr const char* kCountShowFooter =
    R"(The table has a line for each day and key, each day's total, each key's total, and the total of all. The chart has a line
for each day, in the width of the terminal (of COLUMNS where that is set; 80 columns where there is neither); more than six
days in a row without a count become one line. An entry ID above 2147483647 is kept as a negative key: the ID minus 2^32.

A damaged record is reported on standard error with its offset, as FILE: offset N: error: REASON [rule-name], and left out;
the exit status is then 1. The file is only read, never changed. '-' is standard input.

Examples:
  qzlog count show events.cnt
  qzlog count show events.cnt --definitions d.ldf --from 2026-11-01
  qzlog count show events.cnt --chart
  qzlog count show events.cnt --json | jq .total
)";

// A file that is named as it stands is read, whatever its name; a counter's name lacks the suffix.
std::string counter_file_of(const std::string& argument) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(argument, ignored);
  const bool is_there = std::filesystem::exists(status) && !std::filesystem::is_directory(status);
  return argument == "-" || is_there ? argument : parse_counter_path(argument).file;
}

/// Reports damage, counts it and keeps the beginning.
class DamageReport {
 public:
  explicit DamageReport(std::string file_name) : file_name_(std::move(file_name)) {}

  void add(Finding damage) {
    ++count_;
    damage.file = file_name_;
    passed_over().add_at("record", damage.rule.name(), file_name_, damage.offset.value_or(0));
    printer_.print({&damage, 1}, std::cerr);
    if (kept_.size() < kKeptFindings) kept_.push_back(std::move(damage));
  }
  std::uint64_t count() const noexcept { return count_; }
  std::span<const Finding> kept() const noexcept { return kept_; }

 private:
  static constexpr std::size_t kKeptFindings = 100;

  std::string file_name_;
  FindingPrinter printer_{stderr_has_colour()};
  std::uint64_t count_ = 0;
  std::vector<Finding> kept_;
};

std::vector<DayCount> read_file_counts(const std::string& path, DamageReport& damage) {
  const FileDescriptor file = names_descriptor(path) ? open_input(path) : open_regular_file(path);
  ProgressLine progress("records");
  return read_counts(
      file.get(), path,
      [&](Finding found) {
        progress.clear();
        damage.add(std::move(found));
      },
      [&](std::uint64_t count) { progress.update(count); });
}

void keep_days(std::vector<DayCount>& counts, const ShowOptions& options) {
  const std::optional<CalendarDay> from = parse_day(options.from);
  const std::optional<CalendarDay> to = parse_day(options.to);
  std::erase_if(counts, [&](const DayCount& count) { return (from && count.day < *from) || (to && count.day > *to); });
}

std::optional<KeyNames> key_names(const std::string& definitions) {
  if (definitions.empty()) return std::nullopt;
  KeyNames names;
  for (const auto& entry : read_named_entries(definitions).model.entries)
    if (!entry.name.empty()) names.emplace(counter_key(entry.id), entry.name);
  return names;
}

void write(const std::vector<DayCount>& counts, const ShowOptions& options, const KeyNames* names,
           const DamageReport& damage) {
  const CountReport report = make_count_report(counts);
  if (options.json) {
    write_count_json(report, names, {damage.count(), damage.kept()}, std::cout);
  } else if (options.chart) {
    write_bar_chart(report.days, output_columns(), std::cout);
  } else {
    write_count_table(report, names, std::cout);
  }
}

int show(const ShowOptions& options) {
  refuse_reversed_days(options.from, options.to);
  refuse_repeated_standard_input({options.file, options.definitions});
  const std::optional<KeyNames> names = key_names(options.definitions);
  const std::string path = counter_file_of(options.file);
  DamageReport damage(display_name(path));
  std::vector<DayCount> counts = read_file_counts(path, damage);
  keep_days(counts, options);
  write(counts, options, names ? &*names : nullptr, damage);
  return damage.count() == 0 ? kExitSuccess : kExitFindings;
}

}  // namespace

void add_count_show(CLI::App& count_command, int& exit_status) {
  CLI::App* const command = count_command.add_subcommand("show", "Show the counts of a file by day and key");
  const auto options = std::make_shared<ShowOptions>();
  command->footer(kCountShowFooter);
  command->add_option("FILE", options->file, "The counter file; the suffix .cnt may be left out")
      ->type_name("FILE.cnt")
      ->required();
  command
      ->add_option("--definitions", options->definitions,
                   "Definitions, compiled or a source: keys are shown with entry names")
      ->type_name("STD.ldf|STD.yaml")
      ->check(check_not_empty);
  add_day_option(*command, "--from", options->from, "Leave earlier days out");
  add_day_option(*command, "--to", options->to, "Leave later days out");
  CLI::Option* const json = command->add_flag("--json", options->json, "Write one JSON object");
  command->add_flag("--chart", options->chart, "Draw a bar for each day")->excludes(json);
  command->callback([options, &exit_status] { exit_status = show(*options); });
}

}  // namespace qzlog_tool
