#include "tools/render/render_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/logcfg.h"
#include "tools/choice/choice_options.h"
#include "tools/choice/choice_remarks.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/line_tail.h"
#include "tools/count/entry_counting.h"
#include "tools/logs/line_reporter.h"
#include "tools/logs/log_reading.h"
#include "tools/merge/definition_options.h"
#include "tools/merge/definition_sets.h"
#include "tools/options/line_code_page.h"
#include "tools/options/option_checks.h"
#include "tools/options/reader_locale.h"
#include "tools/render/abort_action.h"
#include "tools/render/block_rendering.h"
#include "tools/render/entry_rendering.h"
#include "tools/render/gap_check.h"
#include "tools/render/line_renderer.h"
#include "tools/render/log_follower.h"
#include "tools/render/log_reading.h"
#include "tools/render/render_filter.h"
#include "tools/render/render_help.h"
#include "tools/render/rendering_jobs.h"
#include "tools/report/library_text.h"
#include "tools/report/passed_over.h"
#include "tools/shown/shown_options.h"
#include "tools/shown/shown_output.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/standard_input.h"
#include "tools/system/stop_signals.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"
#include "tools/transport/origin_options.h"
#include "tools/transport/origin_reading.h"
#include "tools/transport/received_log.h"

namespace qzlog_tool {

namespace {

constexpr unsigned kMostJobs = 256;

struct RenderOptions {
  std::vector<DefinitionPaths> definitions;
  std::string catalog;
  ShownOptions shown;
  ChoiceOptions choice;
  bool exit_status = false;
  std::string code_page = "UTF-8";
  bool no_icu = false;
  FilterOptions filter;
  std::string counter;
  std::vector<std::string> entries = {"-"};
  bool follow = false;
  bool merge_by_time = false;
  bool check_gaps = false;
  std::size_t jobs = 1;
  OriginOptions origin;
};

// ICU takes a path without a slash for the name of a package of its own data.
void open_catalog(const std::string& folder) {
  if (folder.empty()) return;
  const std::string path = std::filesystem::absolute(folder).string();
  try {
    qz_LOG_LogConfig::SetMessageCatalogPath(path.c_str());
  } catch (const QZX_logging_all& failure) {
    throw CommandError(kExitCannotRun, "cannot open the message catalog '" + folder + "': " + library_text(failure));
  }
}

/// Shown entries are done with when they are written out; what was held as the last lines is shown once there is
/// nothing more for the moment.
LogFollower::End read_received(const RenderOptions& options, const LogOrigin& origin, EntryRendering& rendering) {
  ReceivedLog log(options.origin, *origin.url, reader_clock(options.shown), options.follow);
  if (options.choice.unique) log.drop_doubles();
  rendering.on_no_memory([&log] { log.leave_current(); });
  const LogReading reading = reading_of(rendering);
  const ReceivedLog::End end = log.read({reading, [&](ReceivedLog::Pause pause) {
                                           if (pause == ReceivedLog::Pause::kNothing) rendering.catch_up();
                                           rendering.output().flush();
                                           return true;
                                         }});
  rendering.on_no_memory(nullptr);
  return {true, end.signal, end.output_gone};
}

/// Whether what becomes of a line is the same whatever becomes of others, and lines are at hand without being waited
/// for in some order of their own.
bool may_share_lines(const RenderOptions& options, const LogOrigin& origin, const LineCodePage& code_page) {
  const ChoiceOptions& choice = options.choice;
  const bool is_read_through = origin.kind == LogOrigin::Kind::kFiles && !options.follow && !options.merge_by_time;
  const bool looks_at_others = options.check_gaps || choice.unique || choice.head != 0 || choice.tail != 0;
  return is_read_through && !looks_at_others && options.counter.empty() && options.definitions.size() == 1 &&
         code_page.is_utf8();
}

std::size_t number_of_jobs(const RenderOptions& options) {
  return options.jobs != 0 ? options.jobs : std::clamp(std::thread::hardware_concurrency(), 1U, kMostJobs);
}

/// Reads files with several threads; what they count is added to what one thread counts with. Nothing where no thread
/// can be had.
std::optional<LogFollower::End> read_with_jobs(const RenderOptions& options, const BlockOptions& shared,
                                               EntryRendering& rendering, EntryChoice* choice) {
  RenderingJobs jobs(number_of_jobs(options), shared, rendering.output(), rendering.reporter());
  if (!jobs.is_running()) return std::nullopt;
  LogReading reading = reading_of(rendering);
  reading.read_bytes = [&jobs](LogInput& input) { jobs.read(input); };
  reading.fail = [&jobs, fail = reading.fail](const std::string& reason) {
    jobs.finish();
    fail(reason);
  };
  LogFollower::End end;
  end.all_read = read_logs(options.entries, reading);
  jobs.finish();
  jobs.for_each_rendering([&](const BlockRendering& part) {
    rendering.add(part.counts());
    if (choice != nullptr) choice->add_count(*part.choice());
  });
  rendering.finish();
  return end;
}

LogFollower::End read_entries(const RenderOptions& options, const LogOrigin& origin, EntryRendering& rendering) {
  LogFollower::End read;
  switch (origin.kind) {
    case LogOrigin::Kind::kReceiver:
      return read_received(options, origin, rendering);
    case LogOrigin::Kind::kJournal:
      read.all_read = read_journal(*origin.journal, options.follow, reading_of(rendering));
      return read;
    case LogOrigin::Kind::kSyslog:
      read.all_read = read_syslog(options.entries, reading_of(rendering),
                                  [&](const std::string& text) { rendering.reporter().summarize(text); });
      return read;
    case LogOrigin::Kind::kFiles:
      break;
  }
  if (options.follow) return LogFollower(rendering).follow(options.entries);
  LogFollower::End end;
  end.all_read =
      options.merge_by_time ? read_merged(options.entries, rendering) : read_inputs(options.entries, rendering);
  return end;
}

/// With the calling thread alone.
LogFollower::End read_alone(const RenderOptions& options, const LogOrigin& origin, EntryRendering& rendering) {
  const AbortAction when_aborted([&rendering] {
    std::signal(SIGABRT, SIG_DFL);
    rendering.report_abort();
    tell_passed_over();
    ::_exit(kExitFindings);
  });
  LogFollower::End end = read_entries(options, origin, rendering);
  rendering.finish();
  return end;
}

/// The status of the command, unless it is ended as whoever follows a file is: by the signal that asked for the end, or
/// by the one of a pipe without a reader.
int end_command(const LogFollower::End& end, bool is_right) {
  if (end.signal != 0) {
    tell_passed_over();
    end_by_signal(end.signal);
  }
  if (end.output_gone) {
    end_by_signal(SIGPIPE);
    return kExitReaderGone;
  }
  if (!end.all_read) return kExitCannotRun;
  return is_right ? kExitSuccess : kExitFindings;
}

/// Everything between an entry and standard output that is no message alone.
class ShownEntries {
 public:
  ShownEntries(const ShownOptions& options, const ShownEvents& events, BufferedOutput& output,
               const LineCodePage* code_page)
      : times_(make_times(options)),
        presentation_(make_presentation(options, place_of_standard_output(), events, times_)),
        output_(*presentation_, output, options.may_have_colour() && stdout_has_colour(), code_page) {}

  ShownOutput* output() { return &output_; }

 private:
  ShownTimes times_;
  std::unique_ptr<Presentation> presentation_;
  ShownOutput output_;
};

/// What an option asked for, or null.
template <typename Part>
Part* pointer_to(std::optional<Part>& part) {
  return part ? &*part : nullptr;
}

/// What the definitions say, as far as somebody asks.
struct RenderDefinitions {
  ShownEvents events;
  KnownDefinitions known;
  std::optional<DefinitionSets> sets;  // where there are several
};

void load(const RenderOptions& options, LineReporter& reporter, RenderDefinitions& definitions) {
  const bool is_asked = !options.shown.shows_messages_alone() || options.choice.is_given();
  const auto use_model = [&definitions](const qzlog_compiler::DefinitionModel& model) {
    definitions.events.add(model);
    definitions.known.add(model);
  };
  const UseModel use = is_asked ? UseModel(use_model) : UseModel();
  const auto path = options.no_icu ? qzlog_compiler::RenderingPaths::kNarrow : qzlog_compiler::RenderingPaths::kIcu;
  load_definitions(options.definitions, path, reporter, use, definitions.sets);
}

void refuse_what_contradicts(const RenderOptions& options, const LogOrigin& origin) {
  const bool has_tail = options.choice.tail != 0;
  if (origin.kind != LogOrigin::Kind::kFiles && options.merge_by_time) {
    throw CommandError(kExitCannotRun, "--merge-by-time takes files: leave out --from or --merge-by-time");
  }
  if (origin.kind == LogOrigin::Kind::kSyslog && options.follow) {
    throw CommandError(kExitCannotRun, "files of syslog are read to their ends: leave out --follow");
  }
  if (origin.kind == LogOrigin::Kind::kJournal && options.follow && has_tail) {
    throw CommandError(kExitCannotRun, "a journal that is followed has no last entries: leave out --tail or --follow");
  }
  if (!options.origin.group.empty() && has_tail) {
    throw CommandError(kExitCannotRun,
                       "the readers of a group do not know which entries are the last: leave out --tail or --group");
  }
}

void refuse_what_contradicts(const RenderOptions& options, const LineCodePage& code_page) {
  check_shown_options(options.shown);
  std::vector<std::string> read_files = files_of(options.definitions);
  read_files.push_back(options.filter.config);
  const bool reads_entries = read_origin(options.origin, options.entries).has_files();
  if (reads_entries) read_files.insert(read_files.end(), options.entries.begin(), options.entries.end());
  refuse_repeated_standard_input(read_files);
  if (options.follow && options.merge_by_time) {
    throw CommandError(kExitCannotRun, "--merge-by-time takes logs that have an end: leave out --follow");
  }
  if (options.shown.output == "json" && !code_page.is_utf8()) {
    throw CommandError(kExitCannotRun, "JSON is in UTF-8; leave out --code-page");
  }
}

int render(const RenderOptions& options) {
  const LineCodePage code_page(options.code_page);
  refuse_what_contradicts(options, code_page);
  const LogOrigin origin = read_origin(options.origin, options.entries);
  refuse_what_contradicts(options, origin);
  const bool is_shown = !options.shown.shows_messages_alone();
  qz_LOG_LogConfig::SetICUEnabled(!options.no_icu);
  // What is shown beside messages is UTF-8, and converted with them.
  qz_LOG_LogConfig::SetCodePage(is_shown ? "UTF-8" : code_page.name().c_str());
  use_reader_settings(options.shown);
  BufferedOutput output(STDOUT_FILENO, "standard output", code_page.is_utf8() ? TextBytes::kUtf8 : TextBytes::kOther);
  LineReporter reporter(output);
  RenderDefinitions definitions;
  load(options, reporter, definitions);
  open_catalog(options.catalog);
  tell_of_catalog_fallback(options.catalog, options.shown.locale);

  std::optional<ShownEntries> shown;
  if (is_shown) shown.emplace(options.shown, definitions.events, output, code_page.is_utf8() ? nullptr : &code_page);
  const ReaderClock clock = reader_clock(options.shown);
  std::optional<EntryChoice> choice;
  if (options.choice.is_given()) choice.emplace(options.choice, definitions.known, clock);
  std::optional<LineTail> tail;
  if (options.choice.tail != 0) tail.emplace(options.choice.tail);
  const RenderConfig config(options.filter);
  std::optional<RenderFilter> filter;
  if (options.filter.active) filter.emplace(options.filter);
  std::optional<EntryCounting> counting;
  if (!options.counter.empty()) counting.emplace(options.counter);
  std::optional<GapCheck> gaps;
  if (options.check_gaps) gaps.emplace();
  // Through ICU the library takes and gives texts in the code page; narrowly it passes bytes on as they are.
  const bool converts = options.no_icu && !code_page.is_utf8() && !is_shown;
  LineRenderer renderer(converts ? &code_page : nullptr);
  EntryRendering rendering(output, reporter, renderer,
                           {shown ? shown->output() : nullptr, pointer_to(choice), pointer_to(tail), pointer_to(filter),
                            pointer_to(counting), pointer_to(gaps), pointer_to(definitions.sets)});
  if (shown) shown->output()->write_heading();
  std::optional<LogFollower::End> end;
  if (number_of_jobs(options) > 1 && may_share_lines(options, origin, code_page)) {
    const BlockOptions shared = {options.shown, definitions.events, options.choice, definitions.known,
                                 clock,         options.filter};
    end = read_with_jobs(options, shared, rendering, pointer_to(choice));
  }
  if (!end) end = read_alone(options, origin, rendering);
  if (filter) reporter.summarize(rendering.filter_summary());
  for (const std::string& remark : choice_remarks(pointer_to(choice), pointer_to(tail))) reporter.summarize(remark);
  if (gaps) reporter.summarize(gaps->summary());
  if (counting) counting->close();
  return end_command(*end, reporter.count() == 0 && (!options.exit_status || rendering.has_shown()));
}

}  // namespace

void add_render_command(CLI::App& app, int& exit_status) {
  CLI::App* const command =
      app.add_subcommand("render", "Turn entries (JSON Lines) into readable messages, one per line");
  const auto options = std::make_shared<RenderOptions>();
  command->footer(std::string(kChoiceFooter) + '\n' + kShownFooter + '\n' + kEntriesHelp + '\n' + kOriginFooter + '\n' +
                  kRenderChecksHelp + '\n' + kRenderExamples);
  add_definition_options(*command, options->definitions);
  command->add_option("--code-page", options->code_page, "The code page of the messages")
      ->type_name("NAME")
      ->capture_default_str();
  const auto no_icu = command->add_flag("--no-icu", options->no_icu, "Render byte by byte, without ICU");
  command->add_option("--catalog", options->catalog, "A folder of ICU resource bundles to take the messages from")
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""))
      ->excludes(no_icu);
  add_filter_options(*command, options->filter);
  command->add_option("--count", options->counter, "Count what is rendered, by day and entry ID, in DIR/NAME.cnt")
      ->type_name("DIR/NAME")
      ->check(check_not_empty);
  command->add_flag("-f,--follow", options->follow, "Go on as the files grow, until a signal comes");
  command->add_flag("--merge-by-time", options->merge_by_time, "Read several logs as one, in the order of times");
  command->add_option("-j,--jobs", options->jobs, "Render with so many threads; 0: as many as processors")
      ->type_name("N")
      ->check(CLI::Range(0U, kMostJobs).description(""))
      ->capture_default_str();
  command->add_flag("--check-gaps", options->check_gaps, "Report lines that are missing or doubled");
  command
      ->add_option("ENTRIES", options->entries,
                   "Files, folders and series of files with entries; '-' or nothing is standard input")
      ->type_name("FILE.jsonl|DIR|DIR/PREFIX");
  add_origin_options(*command, options->origin);
  add_choice_options(*command, options->choice, MaskOption::kLeaveOut);
  add_shown_options(*command, options->shown);
  command->add_flag("--exit-status", options->exit_status, "End with status 1 where no entry was shown");
  command->callback([options, &exit_status] {
    options->choice.losses = loss_bounds(options->filter);
    exit_status = render(*options);
  });
}

}  // namespace qzlog_tool
