#include "tools/count/collect_counts.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qzlog/logcfg.h"
#include "tools/choice/choice_options.h"
#include "tools/choice/choice_remarks.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/known_definitions.h"
#include "tools/count/batch_counting.h"
#include "tools/count/batch_folder.h"
#include "tools/logs/line_kind.h"
#include "tools/logs/line_reporter.h"
#include "tools/merge/definition_options.h"
#include "tools/merge/definition_sets.h"
#include "tools/options/option_checks.h"
#include "tools/shown/shown_options.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/out_of_memory.h"
#include "tools/transport/origin_options.h"
#include "tools/transport/received_log.h"

namespace qzlog_tool {

namespace {

struct CollectOptions {
  std::vector<DefinitionPaths> definitions;
  OriginOptions origin;
  std::string folder;
  std::size_t batch_lines = 50'000;
  std::size_t batch_wait = 5000;
  bool follow = false;
  ShownOptions shown;
  ChoiceOptions choice;
};

constexpr const char* kCollectFooter =
    R"(Entries are counted by day and entry ID in batches, each a file in the folder that also says which lines it covers. An entry is
settled for its --group when its batch is on the disk: the entries of a collector that is killed go to another one, and what
both have counted, 'qzlog count merge' counts once. Days are those of the process's time zone; an entry without a time counts on
the day when the receiver took it. A signal (SIGINT, SIGTERM, SIGHUP) ends it when the batch at hand is written.
)";

constexpr const char* kCollectOriginFooter =
    R"(--from is the URL of a receiver that has what 'qzlog ship' has delivered
(nats://HOST:PORT/STREAM, kafka://HOST:PORT/TOPIC, file:///FOLDER); --start says
where to begin: beginning (the default), now, sequence=N or a TIME. All
collectors with the same --group share the entries. A receiver that is away is
waited for.
)";

constexpr const char* kCollectExamples = R"(
Examples:
  qzlog count collect --definitions shop.ldf --batches counts \
    --from nats://127.0.0.1:4222/ENTRIES --group counts --follow
  qzlog count merge counts --counter events
)";

/// Counts the lines that readers give, and writes them out as batches.
class Collector : public qz_LOG_LineErrorHandler {
 public:
  struct Parts {
    BatchFolder& folder;
    LineReporter& reporter;
    EntryChoice* choice = nullptr;
    DefinitionSets* sets = nullptr;
    std::size_t batch_lines = 1;
    std::chrono::milliseconds batch_wait{0};
  };

  explicit Collector(const Parts& parts) : parts_(parts) {}

  void read(qz_LOG_EntryReader& reader, const ReceivedLog& log) {
    const MemoryErrors errors_of_lines;
    LineDefinitions definitions(parts_.sets, parts_.choice != nullptr ? parts_.choice->line_choice() : nullptr);
    reader.SetLineChoice(definitions.line_choice());
    while (reader.Next(line_)) {
      take_line(log.current());
      parts_.reporter.update(++lines_);
    }
  }
  /// Whether everything that was counted is on the disk, where what is there is written if it is enough.
  bool let_out(ReceivedLog::Pause pause) {
    if (counting_.size() == 0) return true;
    if (pause != ReceivedLog::Pause::kEnd && !is_due(pause)) return false;
    parts_.folder.write_new(counting_.batch());
    counting_.clear();
    return true;
  }
  void TakeLineError(const qz_LOG_LineError& error) override {
    parts_.reporter.report(ErrorLine::of(error), qzlog_compiler::AnyRule(reader_rule(error.rule)), error.text);
  }

 private:
  using Clock = std::chrono::steady_clock;

  // A receiver may give no more until some are settled.
  bool is_due(ReceivedLog::Pause pause) const {
    constexpr std::size_t kEnoughInPauses = 1000;
    const std::size_t enough =
        pause == ReceivedLog::Pause::kNothing ? std::min(kEnoughInPauses, parts_.batch_lines) : parts_.batch_lines;
    return counting_.size() >= enough || Clock::now() - begun_ >= parts_.batch_wait;
  }

  void take_line(const qzlog_received& record) {
    if (parts_.choice != nullptr && !parts_.choice->takes(line_)) return;
    if (!is_entry(line_)) return;
    if (counting_.size() == 0) begun_ = Clock::now();
    if (counting_.add(line_, record)) return;
    parts_.reporter.report(ErrorLine::of(line_), EntryRule::kUncountableDate,
                           "the entry is not counted: the local date of 'time' is outside the years 1 to 9999");
  }

  Parts parts_;
  qz_LOG_EntryLine line_;
  BatchCounting counting_;
  Clock::time_point begun_ = Clock::now();
  std::uint64_t lines_ = 0;
};

LogOrigin receiver_of(const CollectOptions& options) {
  LogOrigin origin = read_origin(options.origin, {"-"});
  if (origin.url) return origin;
  throw CommandError(kExitCannotRun,
                     "collecting counts needs a receiver: give --from with a URL; 'qzlog render --count' counts what "
                     "is in files");
}

int collect(const CollectOptions& options) {
  const LogOrigin origin = receiver_of(options);
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  use_reader_settings(options.shown);
  BufferedOutput output(STDOUT_FILENO, "standard output");
  LineReporter reporter(output);
  KnownDefinitions known;
  std::optional<DefinitionSets> sets;
  load_definitions(
      options.definitions, qzlog_compiler::RenderingPaths::kIcu, reporter,
      [&known](const qzlog_compiler::DefinitionModel& model) { known.add(model); }, sets);
  std::optional<EntryChoice> choice;
  if (options.choice.is_given()) choice.emplace(options.choice, known, reader_clock(options.shown));
  BatchFolder folder(options.folder, true);
  ReceivedLog log(options.origin, *origin.url, reader_clock(options.shown), options.follow);
  Collector collector({folder, reporter, choice ? &*choice : nullptr, sets ? &*sets : nullptr, options.batch_lines,
                       std::chrono::milliseconds(options.batch_wait)});
  log.read({{.output = output,
             .handler = collector,
             .read = [&](qz_LOG_EntryReader& reader) { collector.read(reader, log); },
             .fail = [](const std::string&) {}},
            [&](ReceivedLog::Pause pause) { return collector.let_out(pause); }});
  for (const std::string& remark : choice_remarks(choice ? &*choice : nullptr, nullptr)) reporter.summarize(remark);
  return reporter.count() == 0 ? kExitSuccess : kExitFindings;
}

void add_batch_options(CLI::App& command, CollectOptions& options) {
  command.add_option("--batches", options.folder, "The folder where batches are written, made where there is none")
      ->type_name("DIR")
      ->check(check_not_empty)
      ->required();
  command.add_option("--batch", options.batch_lines, "So many entries are in a batch at most, and up to 1000 more")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000}).description(""))
      ->capture_default_str();
  command.add_option("--batch-wait", options.batch_wait, "Milliseconds that an entry waits for others")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{0}, std::size_t{3'600'000}).description(""))
      ->capture_default_str();
  command.add_flag("-f,--follow", options.follow, "Go on with what comes, until a signal comes");
}

}  // namespace

void add_collect_counts(CLI::App& count_command, int& exit_status) {
  const auto options = std::make_shared<CollectOptions>();
  CLI::App* const command = count_command.add_subcommand("collect", "Count the entries of a receiver in batches");
  command->footer(std::string(kCollectFooter) + '\n' + kCollectOriginFooter + '\n' + kChoiceFooter + kCollectExamples);
  add_definition_options(*command, options->definitions);
  add_batch_options(*command, *options);
  add_origin_options(*command, options->origin);
  command->get_option("--from")->required()->description("Read what this receiver has")->type_name("URL");
  add_choice_options(*command, options->choice);
  // A batch is no list of entries with a beginning and an end; and lines are counted once anyway.
  for (const char* const name : {"--tail", "--head", "--unique"}) command->remove_option(command->get_option(name));
  command->callback([options, &exit_status] { exit_status = collect(*options); });
}

}  // namespace qzlog_tool
