#include "tools/render/render_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_locale.h"
#include "tools/count/entry_counting.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/options/line_code_page.h"
#include "tools/options/locale_names.h"
#include "tools/options/option_checks.h"
#include "tools/render/entry_error.h"
#include "tools/render/line_renderer.h"
#include "tools/render/render_filter.h"
#include "tools/render/render_input.h"
#include "tools/report/finding_printer.h"
#include "tools/report/library_text.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/out_of_memory.h"
#include "tools/system/standard_input.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

struct RenderOptions {
  std::string definitions;
  std::string auxiliary;
  std::string catalog;
  std::string locale;
  std::string code_page = "UTF-8";
  bool no_icu = false;
  FilterOptions filter;
  std::string counter;
  std::string entries = "-";
};

constexpr const char* kRenderFooter = R"(An entry is one line of JSON:
  {"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":0}}
"id" is a number, or the entry's name where a definition source (YAML) is given. The rest may be left out; "default":true
skips the selector messages and "selector":N asks for the one with index N. Blank lines are skipped, and so is a byte order
mark at the beginning. A line may have 16 MiB.

A line that is wrong is reported on standard error, as FILE:LINE: error: REASON [rule-name]. The others are still rendered;
the exit status is then 1. Line feeds and carriage returns inside a message are written as \n and \r. Characters that the
code page lacks come out as its substitution character. Messages are written out before waiting for more input.

With --config, --mask, --level-low or --level-high only the entries that the library's filter lets through are rendered;
at the end, standard error says how many were read, passed and refused. A section of the configuration file may set
PropertyMask, LogLevelLow, LogLevelHigh, DebugEnabled, DebugLogLevelLow and DebugLogLevelHigh; it wins over the options, and
the section 'global' counts for what it leaves out. An entry whose mask has the bit 0x4000000 is a debug entry. The last
line of the file needs an empty line behind it to be read.

With --count each message is counted on the local date of the entry's time, today where it has none, in a file that
'qzlog count show' reads. Counts are written just before the messages are: what is out is counted, even if the command is
killed then. Two commands may count in one file at the same time.

Examples:
  qzlog render --definitions storage.yaml entries.jsonl
  tail -f entries.jsonl | qzlog render --definitions storage.ldf --aux site.ldf
  qzlog render --definitions storage.ldf --catalog messages --locale de_DE entries.jsonl
  qzlog render --definitions storage.yaml --no-icu --code-page ISO-8859-1 < entries.jsonl
  qzlog render --definitions storage.yaml --config log.conf --section storage entries.jsonl
  qzlog render --definitions storage.yaml --level-low 3 --count /var/lib/storage/events entries.jsonl
)";

std::string known_locales() {
  std::string names;
  for (const std::string& name : locale_names()) names += (names.empty() ? "" : ", ") + name;
  return names;
}

std::string check_locale(const std::string& name) {
  qz_Locale locale = QZ_LOCALE_PROCESS;
  return qz_I18N_find_locale(name.c_str(), locale) ? "" : "unknown locale '" + name + "'; known are " + known_locales();
}

void set_locale(const std::string& name) {
  qz_Locale locale = QZ_LOCALE_PROCESS;
  if (!name.empty() && qz_I18N_find_locale(name.c_str(), locale)) qz_LOG_LogConfig::SetLocale(locale);
}

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

/// The row of one of the reader's rules.
const qzlog_compiler::RuleInfo& reader_rule(std::string_view name) {
  const qzlog_compiler::RuleInfo* const row = qzlog_compiler::find_rule(all_entry_rules(), name);
  return row != nullptr ? *row : rule_info(EntryRule::kRefusedValue);
}

/// A line of entries as errors show it.
struct ShownLine {
  std::uint64_t number;
  std::string_view text;

  static ShownLine of(const qz_LOG_EntryLine& line) {
    return {line.GetLine(), {line.GetSource(), line.GetSourceLength()}};
  }
};

/// Says on stderr which lines have no message, and counts them.
class LineErrors : public qz_LOG_LineErrorHandler {
 public:
  LineErrors(std::string file_name, BufferedOutput& output, ProgressLine& progress)
      : file_name_(std::move(file_name)), output_(output), progress_(progress) {}

  void TakeLineError(const qz_LOG_LineError& error) override {
    ++wrong_lines_;
    report({error.line, {error.source, error.source_length}}, qzlog_compiler::AnyRule(reader_rule(error.rule)),
           error.text);
  }

  void report(const ShownLine& line, const EntryError& error) { report(line, error.rule, error.text); }

  std::uint64_t count() const noexcept { return count_; }
  /// Those that are no entry.
  std::uint64_t wrong_lines() const noexcept { return wrong_lines_; }

 private:
  void report(const ShownLine& line, qzlog_compiler::AnyRule rule, const std::string& text) {
    ++count_;
    output_.flush();  // where both go to one place, the error comes after the messages before it
    progress_.clear();
    // A line that is too long is not read.
    if (!line.text.empty()) {
      printer_.add_source(file_name_, line.text, qzlog_compiler::LineBreaks::kLineFeed, line.number);
    }
    text_.clear();
    printer_.append({file_name_, line.number, qzlog_compiler::Severity::kError, rule, text}, text_);
    write_all(STDERR_FILENO, text_.data(), text_.size());
  }

  std::string file_name_;
  BufferedOutput& output_;
  ProgressLine& progress_;
  FindingPrinter printer_{stderr_has_colour()};
  std::string text_;
  std::uint64_t count_ = 0;
  std::uint64_t wrong_lines_ = 0;
};

/// Renders the lines of one file.
class FileRenderer {
 public:
  /// `counting` is null where nothing is counted. What the arguments refer to has to outlive this object.
  FileRenderer(const std::string& path, LineRenderer& renderer, EntryCounting* counting)
      : input_(path, output_), renderer_(renderer), counting_(counting) {
    // A message that is out is counted, whenever the command is killed.
    if (counting_ != nullptr) output_.before_flush([this] { counting_->flush(); });
    current_ = this;
    std::signal(SIGABRT, report_abort);
  }
  ~FileRenderer() {
    std::signal(SIGABRT, SIG_DFL);
    current_ = nullptr;
  }
  FileRenderer(const FileRenderer&) = delete;
  FileRenderer& operator=(const FileRenderer&) = delete;

  void render() {
    const MemoryErrors errors_of_lines;
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(input_, input_.shown_path().c_str(), &errors_);
    while (reader.Next(line_)) {
      render_line();
      progress_.update(line_.GetLine());
    }
    output_.flush();
  }

  bool has_errors() const { return errors_.count() != 0; }

  void print_summary() {
    progress_.clear();
    std::string text = "entries: " + std::to_string(entries_ + errors_.wrong_lines()) + " read, " +
                       std::to_string(passed_) + " passed, " + std::to_string(refused_) + " refused";
    if (errors_.count() != 0) text += ", " + std::to_string(errors_.count()) + " wrong";
    text += '\n';
    write_all(STDERR_FILENO, text.data(), text.size());
  }

 private:
  // The library ends the process where ICU takes a pattern and then cannot apply it. It does so from within a call of
  // this thread, so what is rendered can still be written, and the line be named.
  static void report_abort(int /*signal*/) {
    std::signal(SIGABRT, SIG_DFL);
    current_->errors_.report(
        ShownLine::of(current_->line_),
        {EntryRule::kBrokenPattern,
         "ICU takes the message's pattern but cannot apply it; nothing behind this line is rendered"});
    _exit(kExitFindings);
  }

  void render_line() {
    if (line_.IsLoss()) return output_.write_line(renderer_.tell_loss(line_));
    ++entries_;
    try {
      const std::optional<std::string_view> message = renderer_.render(line_);
      if (message) {
        write(*message);
      } else {
        ++refused_;
      }
    } catch (const EntryError& error) {
      errors_.report(ShownLine::of(line_), error);
    }
  }

  void write(std::string_view message) {
    ++passed_;
    const bool counted = counting_ == nullptr || counting_->add(line_.GetEntry(), line_.HasTime());
    output_.write_line(message);
    if (!counted) {
      throw EntryError{EntryRule::kUncountableDate,
                       "the message is not counted: the local date of 'time' is outside the years 1 to 9999"};
    }
  }

  BufferedOutput output_{STDOUT_FILENO, "standard output"};
  RenderInput input_;
  LineRenderer& renderer_;
  EntryCounting* counting_;
  ProgressLine progress_{"lines"};
  LineErrors errors_{input_.shown_path(), output_, progress_};
  qz_LOG_EntryLine line_;
  std::uint64_t entries_ = 0;
  std::uint64_t passed_ = 0;
  std::uint64_t refused_ = 0;

  static inline FileRenderer* current_ = nullptr;
};

int render(const RenderOptions& options) {
  refuse_repeated_standard_input({options.definitions, options.auxiliary, options.filter.config, options.entries});
  const LineCodePage code_page(options.code_page);
  qz_LOG_LogConfig::SetICUEnabled(!options.no_icu);
  qz_LOG_LogConfig::SetCodePage(code_page.name().c_str());
  set_locale(options.locale);
  load_definitions(options.definitions, options.auxiliary,
                   options.no_icu ? qzlog_compiler::RenderingPaths::kNarrow : qzlog_compiler::RenderingPaths::kIcu);
  open_catalog(options.catalog);

  std::optional<RenderFilter> filter;
  if (options.filter.active) filter.emplace(options.filter);
  std::optional<EntryCounting> counting;
  if (!options.counter.empty()) counting.emplace(options.counter);
  // Through ICU the library takes and gives texts in the code page; narrowly it passes bytes on as they are.
  const bool converts = options.no_icu && !code_page.is_utf8();
  LineRenderer renderer(converts ? &code_page : nullptr, filter ? &*filter : nullptr);
  FileRenderer file(options.entries, renderer, counting ? &*counting : nullptr);
  file.render();
  if (filter) file.print_summary();
  if (counting) counting->close();
  return file.has_errors() ? kExitFindings : kExitSuccess;
}

}  // namespace

void add_render_command(CLI::App& app, int& exit_status) {
  CLI::App* const command =
      app.add_subcommand("render", "Turn entries (JSON Lines) into readable messages, one per line");
  const auto options = std::make_shared<RenderOptions>();
  command->footer(kRenderFooter);
  command->add_option("--definitions", options->definitions, "The log definition file, compiled or a source")
      ->type_name("STD.ldf|STD.yaml")
      ->required();
  command->add_option("--aux", options->auxiliary, "An auxiliary definition file, compiled or a source")
      ->type_name("AUX.ldf|AUX.yaml");
  command->add_option("--locale", options->locale, "The locale of messages, numbers and dates; default: the process's")
      ->type_name("ll_CC")
      ->check(check_locale);
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
  command->add_option("ENTRIES", options->entries, "The entries; '-' or nothing is standard input")
      ->type_name("FILE.jsonl");
  command->callback([options, &exit_status] { exit_status = render(*options); });
}

}  // namespace qzlog_tool
