#include "tools/ship/ship_command.h"

#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "qzlog/logcfg.h"
#include "tools/choice/choice_options.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/known_definitions.h"
#include "tools/logs/line_reporter.h"
#include "tools/merge/definition_options.h"
#include "tools/merge/definition_sets.h"
#include "tools/options/option_checks.h"
#include "tools/options/option_heading.h"
#include "tools/options/reader_locale.h"
#include "tools/report/command_message.h"
#include "tools/report/passed_over.h"
#include "tools/ship/dead_letters.h"
#include "tools/ship/line_judge.h"
#include "tools/ship/metrics_file.h"
#include "tools/ship/record_host.h"
#include "tools/ship/ship_help.h"
#include "tools/ship/ship_metrics.h"
#include "tools/ship/shipped_logs.h"
#include "tools/ship/shipping.h"
#include "tools/ship/state_file.h"
#include "tools/ship/state_path.h"
#include "tools/ship/transport_sender.h"
#include "tools/shown/shown_options.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/host_name.h"
#include "tools/system/stop_signals.h"
#include "tools/transport/receiver_options.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_url.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

struct ShipOptions {
  std::vector<std::string> series;
  std::string to;
  std::string state;
  std::string dead_letters;
  std::string product;
  ReceiverOptions receiver;
  std::string metrics;
  std::size_t batch_lines = 5000;
  std::size_t batch_kilobytes = 2048;
  std::size_t batch_wait = 100;
  bool once = false;
  bool moved = false;
  std::vector<DefinitionPaths> definitions;
  ShownOptions shown;
  ChoiceOptions choice;
};

/// What reads entries, as far as somebody asks.
struct EntryParts {
  KnownDefinitions known;
  std::optional<DefinitionSets> sets;
  std::optional<EntryChoice> choice;
  std::optional<LineJudge> judge;
  std::optional<RecordMessages> messages;
};

void prepare(const ShipOptions& options, LineReporter& reporter, EntryParts& parts) {
  if (options.definitions.empty()) {
    if (options.choice.is_given()) {
      throw CommandError(kExitCannotRun, "choosing entries needs --definitions, against which they are read");
    }
    return;
  }
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  use_reader_settings(options.shown);
  load_definitions(
      options.definitions, qzlog_compiler::RenderingPaths::kIcu, reporter,
      [&parts](const qzlog_compiler::DefinitionModel& model) { parts.known.add(model); }, parts.sets);
  DefinitionSets* const sets = parts.sets ? &*parts.sets : nullptr;
  parts.messages.emplace(sets);
  if (!options.choice.is_given()) return;
  parts.choice.emplace(options.choice, parts.known, reader_clock(options.shown));
  parts.judge.emplace(*parts.choice, sets);
}

Shipping::Settings settings_of(const ShipOptions& options, const TransportUrl& url) {
  Shipping::Settings settings;
  settings.to = url.text();
  settings.product = options.product;
  settings.batch.records = options.batch_lines;
  settings.batch.bytes = options.batch_kilobytes << 10U;
  settings.batch_wait = std::chrono::milliseconds(options.batch_wait);
  settings.once = options.once;
  return settings;
}

/// A slip in the URL that was told at once should bind nobody.
bool has_nothing(const ShipState& state) {
  return std::all_of(state.series.begin(), state.series.end(), [](const SeriesState& series) {
    return std::all_of(series.places.begin(), series.places.end(),
                       [](const FilePlace& place) { return place.offset == 0; });
  });
}

/// What has moved is the same still, under another name.
void begin_at(const StateFile& file, const TransportUrl& url, bool has_moved, const RecordIdentity& identities,
              ShippedLogs& logs, LineTaker& taker) {
  std::optional<ShipState> state = file.read();
  if (!state || has_nothing(*state)) return;
  if (state->to != url.text() && !has_moved) {
    throw CommandError(kExitCannotRun, "the state '" + file.path() + "' is of another receiver, " + state->to +
                                           ": name another state with --state, for what one has acknowledged the "
                                           "other does not have; or say --moved, if it is the same one under "
                                           "another URL");
  }
  if (has_moved) logs.take_over(state->series);
  logs.begin_at(state->series, identities, taker);
}

void refuse_one_file_for_two(const std::vector<std::string>& paths) {
  std::set<std::string> seen;
  for (const std::string& path : paths) {
    if (path.empty()) continue;
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
    if (!seen.insert(error ? path : whole.string()).second) {
      throw CommandError(kExitCannotRun, "'" + path +
                                             "' is named twice: the state, its lock, the dead letters and the "
                                             "metrics are files of their own");
    }
  }
}

int end_command(const Shipping::End& end, const ShipOptions& options, const DeadLetters& dead_letters) {
  if (!end.all_settled) {
    print_command_message(Severity::kWarning,
                          "lines of the batch under way are not delivered; the next start goes on with them");
    return kExitFindings;
  }
  if (!options.once) {  // whoever stops a service is told, and need not do anything about it
    tell_passed_over();
    passed_over().clear();
    return kExitSuccess;
  }
  return end.all_read && dead_letters.count() == 0 ? kExitSuccess : kExitFindings;
}

/// Each series that is followed has a file open: as many as the system lets us.
void take_all_descriptors() {
  rlimit limit = {};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);  // with fewer a file that cannot be opened is an error of its own
}

int ship(const ShipOptions& options) {
  take_all_descriptors();
  std::signal(SIGPIPE, SIG_IGN);  // of a connection that breaks
  const TransportUrl url(options.to);
  const TransportPlugin plugin(url, options.receiver.plugin_folder());
  const RecordIdentity identities(host_name());
  const TransportOptions transport = transport_options(options.receiver, "qzlog-ship");
  const TransportSettings transport_settings(url, transport);
  BufferedOutput output(STDOUT_FILENO, "standard output");
  LineReporter reporter(output);
  EntryParts entries;
  prepare(options, reporter, entries);

  ShippedLogs logs(options.series);
  const std::string state_path = options.state.empty() ? usual_state_path(options.series, url.text()) : options.state;
  const std::string letters_path =
      options.dead_letters.empty() ? state_path + ".dead-letters.jsonl" : options.dead_letters;
  refuse_one_file_for_two({state_path, state_path + ".lock", letters_path, options.metrics});
  StateFile state(state_path);
  DeadLetters dead_letters(letters_path, url.text());
  ShipMetrics metrics;
  metrics.to = url.text();
  MetricsFile metrics_file(options.metrics,
                           [&] { return metrics_text(metrics, logs.progress(), std::chrono::system_clock::now()); });
  RecordHost host(
      entries.known, entries.messages ? &*entries.messages : nullptr,
      [&url](const std::string& text) { print_command_message(Severity::kWarning, url.text() + ": " + text); },
      [] { return StopSignals::requested() != 0; });
  TransportSender sender(plugin, transport_settings, host);
  Shipping shipping(settings_of(options, url), {.source = logs,
                                                .sender = sender,
                                                .state = state,
                                                .dead_letters = dead_letters,
                                                .metrics = metrics,
                                                .identities = identities,
                                                .known = entries.known,
                                                .judge = entries.judge ? &*entries.judge : nullptr,
                                                .report = [&](bool is_last) { metrics_file.update(is_last); },
                                                .stop_signal = [] { return StopSignals::requested(); }});
  begin_at(state, url, options.moved, identities, logs, shipping);
  const StopSignals signals;
  return end_command(shipping.run(), options, dead_letters);
}

void add_target_options(CLI::App& command, ShipOptions& options) {
  const OptionHeading heading(command, "The receiver");
  command.add_option("--to", options.to, "Where lines are delivered to")->type_name("URL")->required();
  command.add_option("--product", options.product, "The product's name, for subjects and the like")
      ->type_name("NAME")
      ->check(check_not_empty);
  add_receiver_options(command, options.receiver);
}

void add_delivery_options(CLI::App& command, ShipOptions& options) {
  const OptionHeading heading(command, "Delivering");
  command.add_option("--state", options.state, "What the receiver has, from one start to the next")
      ->type_name("FILE.json")
      ->check(check_not_empty);
  command
      .add_option("--dead-letters", options.dead_letters,
                  "Where lines go that are not delivered (default: the state's name with .dead-letters.jsonl)")
      ->type_name("FILE.jsonl")
      ->check(check_not_empty);
  command.add_option("--metrics", options.metrics, "Write how it goes to this file, each second")
      ->type_name("FILE.json")
      ->check(check_not_empty);
  command.add_flag("--moved", options.moved,
                   "Go on with the state though the logs' folder or the receiver's URL is another one by now");
  command.add_flag("--once", options.once, "End when all that is there has been delivered");
  command.add_option("--batch", options.batch_lines, "So many lines are sent at once at most")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{100000}).description(""))
      ->capture_default_str();
  command.add_option("--batch-size", options.batch_kilobytes, "So many KiB of lines are sent at once at most")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{65536}).description(""))
      ->capture_default_str();
  command.add_option("--batch-wait", options.batch_wait, "Milliseconds that a line waits for others")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{0}, std::size_t{60000}).description(""))
      ->capture_default_str();
}

void add_entry_options(CLI::App& command, ShipOptions& options) {
  add_definition_options(command, options.definitions);
  command.get_option("--definitions")->required(false);
  add_choice_options(command, options.choice);
  // What comes last of a log that goes on is not known, and the first few would be others with each start.
  command.remove_option(command.get_option("--tail"));
  command.remove_option(command.get_option("--head"));
  const OptionHeading heading(command, "Messages");
  command.add_option("--locale", options.shown.locale, "The locale of messages: de_AT, zh-Hant")
      ->type_name("ll_CC")
      ->check(check_reader_locale);
  add_zone_options(command, options.shown);
}

}  // namespace

void add_ship_command(CLI::App& app, int& exit_status) {
  CLI::App* const command = app.add_subcommand("ship", "Deliver series of logs to a receiver as they are written");
  const auto options = std::make_shared<ShipOptions>();
  command->footer(std::string(kShipFooter) + '\n' + kChoiceFooter + '\n' + kShipExamples);
  add_target_options(*command, *options);
  add_delivery_options(*command, *options);
  command->add_option("SERIES", options->series, "Series of files, or folders with some")
      ->type_name("DIR/PREFIX|DIR")
      ->required();
  add_entry_options(*command, *options);
  command->callback([options, &exit_status] { exit_status = ship(*options); });
}

}  // namespace qzlog_tool
