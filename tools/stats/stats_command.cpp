#include "tools/stats/stats_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "qzlog/logcfg.h"
#include "tools/choice/choice_options.h"
#include "tools/choice/choice_remarks.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/line_tail.h"
#include "tools/logs/line_reporter.h"
#include "tools/logs/log_reading.h"
#include "tools/merge/definition_options.h"
#include "tools/merge/definition_sets.h"
#include "tools/options/option_checks.h"
#include "tools/report/passed_over.h"
#include "tools/shown/shown_options.h"
#include "tools/stats/entry_scan.h"
#include "tools/stats/grouping.h"
#include "tools/stats/line_tally.h"
#include "tools/stats/stats_output.h"
#include "tools/stats/stats_report.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/standard_input.h"
#include "tools/system/stop_signals.h"
#include "tools/system/terminal.h"
#include "tools/transport/origin_options.h"
#include "tools/transport/origin_reading.h"
#include "tools/transport/received_log.h"

namespace qzlog_tool {

namespace {

struct StatsOptions {
  std::vector<DefinitionPaths> definitions;
  std::vector<std::string> entries = {"-"};
  std::string by = "event";
  std::string numbers_of;
  std::size_t top = 0;
  bool json = false;
  bool csv = false;
  ShownOptions shown;
  ChoiceOptions choice;
  OriginOptions origin;
};

constexpr const char* kStatsFooter = R"(The table has a line for each group, with its share of all and a bar, then what
other groups have, then all. Times and levels are in their order, other groups
by their counts. --by counts by event, level, hour, day, writer, or the values of
an attribute: --by Reason, or attribute:level where the attribute has the name
of one of these. What has no such value, or no time, has the group -.

--of looks at the numbers of an attribute: how many there are, the smallest, the
median, the one that 99 % do not exceed, the largest and the mean. Median and
99 % are exact up to 500000 numbers, and within 1 % beyond (see "error" in
--json). Numbers that are not finite are left out.

Hours and days are those of --time-zone, else of the process. Inputs are read as
by 'qzlog render': files, folders and series of files. A line that is wrong is
reported on standard error and not counted; the exit status is then 1. Where
there are more groups than memory is for, small ones are added to the others, and
standard error says so. With --csv the last column says what a record is: a group
("value"), the one without a value ("none") or the others, added up ("rest").
)";

constexpr const char* kStatsExamples = R"(
Examples:
  qzlog stats --definitions storage.ldf logs
  qzlog stats --definitions storage.ldf --by hour --level 7.. --since today logs
  qzlog stats --definitions storage.ldf --by Volume --top 10 logs
  qzlog stats --definitions storage.ldf --by Volume --of Free logs
  qzlog stats --definitions storage.ldf --by writer --utc logs
  qzlog stats --definitions storage.ldf --where 'Free < 1000' --csv logs
  qzlog stats --definitions storage.ldf --by level --json logs | jq .total.count
)";

std::string check_top(const std::string& text) {
  constexpr std::int64_t kMost = 1'000'000;
  return qzlog_compiler::parse_number(text, 1, kMost) ? "" : "'" + text + "' is no number from 1 to 1000000";
}

/// How many entries of a group are counted at once: none of them is done with before the result is out.
constexpr std::size_t kMostHeldRecords = 1'000'000;

struct ReadEntries {
  bool all_read = true;
  int signal = 0;
};

ReadEntries read_entries(const StatsOptions& options, const LogOrigin& origin, const LogReading& reading,
                         LineReporter& reporter, ReceivedLog* received) {
  switch (origin.kind) {
    case LogOrigin::Kind::kReceiver:
      return {true, received->read({reading, [](ReceivedLog::Pause) { return false; }, kMostHeldRecords}).signal};
    case LogOrigin::Kind::kJournal:
      return {read_journal(*origin.journal, false, reading)};
    case LogOrigin::Kind::kSyslog:
      return {read_syslog(options.entries, reading, [&](const std::string& text) { reporter.summarize(text); })};
    case LogOrigin::Kind::kFiles:
      break;
  }
  return {read_logs(options.entries, reading)};
}

LogReading reading_of(BufferedOutput& output, LineReporter& reporter, LineTally& tally) {
  return {.output = output,
          .handler = tally,
          .read = [&tally](qz_LOG_EntryReader& reader) { tally.read(reader); },
          .fail = [&reporter](const std::string& reason) { reporter.report(qzlog_compiler::Severity::kError, reason); },
          .is_complete = [&tally] { return tally.is_complete(); }};
}

void write(const StatsOptions& options, const StatsReport& report, const StatsRemarks& remarks,
           const StatsTexts& texts) {
  if (options.json) return write_stats_json(report, remarks, texts, std::cout);
  if (options.csv) return write_stats_csv(report, texts, std::cout);
  write_stats_table(report, remarks, texts, output_columns(), ::isatty(STDOUT_FILENO) == 1, std::cout);
}

int run(const StatsOptions& options) {
  std::vector<std::string> read_files = files_of(options.definitions);
  const LogOrigin origin = read_origin(options.origin, options.entries);
  if (origin.has_files()) read_files.insert(read_files.end(), options.entries.begin(), options.entries.end());
  refuse_repeated_standard_input(read_files);
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  use_reader_settings(options.shown);
  BufferedOutput output(STDOUT_FILENO, "standard output");  // lines that are wrong are told behind what is written
  LineReporter reporter(output);
  KnownDefinitions known;
  std::vector<qzlog_compiler::DefinitionModel> models;
  std::optional<DefinitionSets> sets;
  const auto use_model = [&](const qzlog_compiler::DefinitionModel& model) {
    known.add(model);
    models.push_back(model);
  };
  load_definitions(options.definitions, qzlog_compiler::RenderingPaths::kIcu, reporter, use_model, sets);
  Grouping grouping(CountedBy::read(options.by, options.numbers_of, known), known, zone_of(options.shown));
  EntryScan scan(grouping.scanned_attributes());
  for (const qzlog_compiler::DefinitionModel& model : std::exchange(models, {})) scan.add(model);
  std::optional<EntryChoice> choice;
  if (options.choice.is_given()) choice.emplace(options.choice, known, reader_clock(options.shown));
  std::optional<LineTail> tail;
  if (options.choice.tail != 0) tail.emplace(options.choice.tail);

  std::optional<ReceivedLog> received;
  if (origin.url) received.emplace(options.origin, *origin.url, reader_clock(options.shown), false);
  if (received && options.choice.unique) received->drop_doubles();
  LineTally tally(grouping, scan, reporter,
                  {choice ? &*choice : nullptr, tail ? &*tail : nullptr, sets ? &*sets : nullptr});
  const LogReading reading = reading_of(output, reporter, tally);
  const ReadEntries read = read_entries(options, origin, reading, reporter, received ? &*received : nullptr);
  tally.finish();
  const StatsReport report = make_stats_report(tally.table(), grouping.counted(), options.top);
  ShownTimes times(zone_of(options.shown), TimeStyle::kIso);
  write(options, report,
        {tally.lost(), tally.held(), !options.choice.where.empty(), reporter.count(), tally.findings()},
        {known, times});
  if (report.missed != 0) {
    reporter.summarize("more groups than memory is for; lines that a group may lack: " + std::to_string(report.missed));
  }
  for (const std::string& remark : choice_remarks(choice ? &*choice : nullptr, tail ? &*tail : nullptr)) {
    reporter.summarize(remark);
  }
  if (received) {
    std::cout.flush();
    if (std::cout) received->settle();
  }
  if (read.signal != 0) {
    tell_passed_over();
    end_by_signal(read.signal);
  }
  if (!read.all_read) return kExitCannotRun;
  return reporter.count() == 0 ? kExitSuccess : kExitFindings;
}

}  // namespace

void add_stats_command(CLI::App& app, int& exit_status) {
  CLI::App* const command = app.add_subcommand("stats", "Count entries by event, level, time or what they hold");
  const auto options = std::make_shared<StatsOptions>();
  command->footer(std::string(kStatsFooter) + '\n' + kOriginFooter + '\n' + kChoiceFooter + kStatsExamples);
  add_definition_options(*command, options->definitions);
  command->add_option("--by", options->by, "What to count by: event, level, hour, day, writer or an attribute")
      ->type_name("ATTRIBUTE")
      ->check(check_not_empty)
      ->capture_default_str();
  command->add_option("--of", options->numbers_of, "An attribute whose numbers are looked at")
      ->type_name("ATTRIBUTE")
      ->check(check_not_empty);
  command->add_option("--top", options->top, "Only so many groups, the largest; the others are added up")
      ->type_name("N")
      ->check(check_top);
  CLI::Option* const json = command->add_flag("--json", options->json, "Write one JSON object");
  command->add_flag("--csv", options->csv, "Write the groups as CSV")->excludes(json);
  command
      ->add_option("ENTRIES", options->entries,
                   "Files, folders and series of files with entries; '-' or nothing is standard input")
      ->type_name("FILE.jsonl|DIR|DIR/PREFIX");
  add_origin_options(*command, options->origin);
  add_choice_options(*command, options->choice);
  add_zone_options(*command, options->shown);
  command->callback([options, &exit_status] { exit_status = run(*options); });
}

}  // namespace qzlog_tool
