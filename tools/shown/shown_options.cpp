#include "tools/shown/shown_options.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <ctime>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "tools/compiler/text/utf8_text.h"
#include "tools/options/option_checks.h"
#include "tools/options/option_heading.h"
#include "tools/options/raw_option.h"
#include "tools/options/reader_locale.h"
#include "tools/options/reader_zone.h"
#include "tools/shown/column_presentations.h"
#include "tools/shown/line_presentations.h"
#include "tools/system/command_error.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kShortFormat = "{time} {level_name:<8} {name} {message}";
constexpr std::string_view kCsvColumns = "time,level,level_name,id,name,message";
constexpr std::string_view kTableColumns = "time,level_name,name,message";

TimeStyle style_of(const std::string& name) {
  if (name == "locale") return TimeStyle::kLocale;
  return name == "short" ? TimeStyle::kShort : TimeStyle::kIso;
}

bool has_columns(const ShownOptions& options) { return options.output == "csv" || options.output == "table"; }

void tell_remark(std::string_view option, const std::string& remark) {
  std::cerr << "qzlog: " << option << ": " << remark << '\n';
}

std::vector<FieldChoice> columns_of(const ShownOptions& options, std::string_view usual, const ShownEvents& events,
                                    ShownRemarks remarks) {
  std::vector<FieldChoice> columns =
      read_columns(options.columns.empty() ? usual : std::string_view(options.columns), events);
  if (options.columns.empty() || remarks == ShownRemarks::kLeaveOut) return columns;
  for (const std::string& remark : remarks_of_hidden(columns)) tell_remark("--columns", remark);
  return columns;
}

std::unique_ptr<Presentation> table_of(const ShownOptions& options, const ShownPlace& place, const ShownEvents& events,
                                       ShownTimes& times, ShownRemarks remarks) {
  auto table =
      std::make_unique<TablePresentation>(columns_of(options, kTableColumns, events, remarks), place, events, times);
  if (remarks == ShownRemarks::kSay && !table->left_out().empty()) {
    tell_remark("--output table", std::to_string(place.columns) + " columns have no room for " + table->left_out());
  }
  return table;
}

LineFormat format_of(const ShownOptions& options, const ShownEvents& events, ShownRemarks remarks) {
  if (options.format.empty()) return LineFormat(kShortFormat, events);
  LineFormat format(options.format, events);
  if (remarks == ShownRemarks::kLeaveOut) return format;
  for (const std::string& remark : format.remarks()) tell_remark("--format", remark);
  return format;
}

CLI::Option* add_word_option(CLI::App& command, const char* name, std::string& value, const char* choices,
                             const char* description) {
  std::vector<std::string> items;
  const std::string_view all(choices);
  for (std::size_t at = 0; at <= all.size();) {
    const std::size_t end = std::min(all.find('|', at), all.size());
    items.emplace_back(all.substr(at, end - at));
    at = end + 1;
  }
  return command.add_option(name, value, description)
      ->type_name(choices)
      ->check(CLI::IsMember(std::move(items)).description(""))
      ->capture_default_str();
}

}  // namespace

void add_zone_options(CLI::App& command, ShownOptions& options) {
  CLI::Option* const zone =
      command.add_option("--time-zone", options.time_zone, "The reader's time zone: Europe/Berlin")
          ->type_name("ZONE")
          ->check(check_time_zone);
  command.add_flag("--utc", options.utc, "Show times in UTC")->excludes(zone);
}

void add_shown_options(CLI::App& command, ShownOptions& options) {
  const OptionHeading heading(command, "Showing entries");
  CLI::Option* const output = add_word_option(command, "--output", options.output, "text|short|long|json|table|csv",
                                              "The form in which entries are shown");
  command.add_option("--format", options.format, "A line with fields: '{time} {message}'")
      ->type_name("FORMAT")
      ->check(check_not_empty)
      ->excludes(output);
  command.add_option("--columns", options.columns, "The fields of a table: time,name,message")
      ->type_name("NAMES")
      ->check(check_not_empty)
      ->needs(output);
  command.add_option("--locale", options.locale, "The reader's locale: de_AT, zh-Hant")
      ->type_name("ll_CC")
      ->check(check_reader_locale);
  add_zone_options(command, options);
  add_word_option(command, "--time-style", options.time_style, "iso|locale|short", "How times are written");
  add_raw_option(command);
}

void check_shown_options(const ShownOptions& options) {
  if (!options.columns.empty() && !has_columns(options)) {
    throw CommandError(kExitCannotRun, "--columns needs --output table or csv");
  }
}

void use_reader_settings(const ShownOptions& options) {
  use_reader_locale(options.locale);
  const std::string zone = options.utc ? "UTC" : options.time_zone;
  if (zone.empty() || use_time_zone(zone)) return;
  std::cerr << "qzlog: the system does not have the time zone " << qzlog_compiler::quoted(zone)
            << "; only the times that are shown beside messages are in it\n";
}

ReaderZone zone_of(const ShownOptions& options) {
  if (options.utc) return ReaderZone::utc();
  return options.time_zone.empty() ? ReaderZone() : ReaderZone::named(options.time_zone);
}

ReaderClock reader_clock(const ShownOptions& options) {
  const auto zone = std::make_shared<ReaderZone>(zone_of(options));
  return {std::time(nullptr), [zone](long long moment) { return zone->offset_at(moment); }};
}

ShownTimes make_times(const ShownOptions& options) {
  const std::string locale = options.locale.empty() ? "" : find_reader_locale(options.locale)->name;
  return {zone_of(options), style_of(options.time_style), locale};
}

std::unique_ptr<Presentation> make_presentation(const ShownOptions& options, const ShownPlace& place,
                                                const ShownEvents& events, ShownTimes& times, ShownRemarks remarks) {
  if (options.shows_messages_alone()) return std::make_unique<MessagePresentation>();
  if (options.output == "long") return std::make_unique<LongPresentation>(events, times);
  if (options.output == "json") return std::make_unique<JsonPresentation>(events, times);
  if (options.output == "csv") {
    return std::make_unique<CsvPresentation>(columns_of(options, kCsvColumns, events, remarks), events, times);
  }
  if (options.output == "table") return table_of(options, place, events, times, remarks);
  return std::make_unique<FormatPresentation>(format_of(options, events, remarks), place, events, times);
}

ShownPlace place_of_standard_output() {
  if (::isatty(STDOUT_FILENO) != 1) return {};
  return {is_escaped(STDOUT_FILENO), output_columns()};
}

}  // namespace qzlog_tool
