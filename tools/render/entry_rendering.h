#ifndef QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H
#define QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "qzlog/entry_lines.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/line_tail.h"
#include "tools/count/entry_counting.h"
#include "tools/logs/line_reporter.h"
#include "tools/merge/definition_sets.h"
#include "tools/merge/merged_logs.h"
#include "tools/render/gap_check.h"
#include "tools/render/line_renderer.h"
#include "tools/render/render_filter.h"
#include "tools/shown/shown_output.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// What is done with lines beside rendering their messages; null where it was not asked for.
struct RenderingParts {
  ShownOutput* shown = nullptr;          ///< else messages are written as they are
  EntryChoice* choice = nullptr;         ///< which lines are wanted
  LineTail* tail = nullptr;              ///< holds the wanted ones until the last of them are known
  const RenderFilter* filter = nullptr;  ///< the library's
  EntryCounting* counting = nullptr;
  GapCheck* gaps = nullptr;
  DefinitionSets* sets = nullptr;  ///< where there are several definitions
};

/// What became of lines.
struct RenderedCounts {
  std::uint64_t entries = 0;
  std::uint64_t refused = 0;
  std::uint64_t failed = 0;  ///< that have no message
  std::uint64_t unread = 0;  ///< lines that the reader refused
  bool has_shown = false;
};

/// Renders lines of entries to an output, from whichever files they come. One thread uses it.
class EntryRendering : public qz_LOG_LineErrorHandler {
 public:
  /// What the arguments refer to has to outlive this object.
  EntryRendering(BufferedOutput& output, LineReporter& reporter, LineRenderer& renderer, const RenderingParts& parts);
  EntryRendering(const EntryRendering&) = delete;
  EntryRendering& operator=(const EntryRendering&) = delete;

  /// The lines of a reader that was made with this object as its handler, until its end. What its source throws goes
  /// on, and the rest may be rendered afterwards.
  void render(qz_LOG_EntryReader& reader);
  /// The same for logs that are read with line_choice() and use_definitions.
  void render(MergedLogs& logs);
  /// The same for a part of the log `file`, read with a reader of its own from memory: `lines_before` is what its
  /// numbers lack. Of what is asked for beside a presentation, the choice and the filter are allowed.
  void render_part(qz_LOG_EntryReader& reader, const char* file, std::uint64_t lines_before);
  void TakeLineError(const qz_LOG_LineError& error) override;

  /// Decides on lines by their bytes; may be null.
  qz_LOG_LineChoice* line_choice() const;
  /// Before a line is read.
  void use_definitions(std::string_view line) {
    if (parts_.sets != nullptr) parts_.sets->use_for(line);
  }

  BufferedOutput& output() noexcept { return output_; }
  LineReporter& reporter() noexcept { return reporter_; }
  /// Called for an entry that could not be shown for want of memory, while its line is at hand.
  void on_no_memory(std::function<void()> call) { on_no_memory_ = std::move(call); }
  /// Something was shown.
  bool has_shown() const noexcept { return counts_.has_shown; }
  const RenderedCounts& counts() const noexcept { return counts_; }
  /// Adds what others, of other lines, have counted.
  void add(const RenderedCounts& counts);
  /// As many lines as were asked for are there: no other is shown.
  bool is_complete() const { return parts_.choice != nullptr && parts_.choice->is_complete(); }

  /// Before more lines are waited for: shows what was held as the last lines, from now on each at once, and writes out
  /// what is held.
  void catch_up();
  /// The library ends the process where ICU takes a pattern and then cannot apply it: reports the line at hand.
  void report_abort();
  /// Catches up, and says which lines are missing.
  void finish();
  /// How many of the entries that are wanted were read, passed and refused; lines that are no entries are read too.
  std::string filter_summary() const;

 private:
  void report(const EntryError& error) { reporter_.report(place(), error.rule, error.text); }
  ErrorLine place() const;
  template <typename Reader>
  void take_lines(Reader& reader);
  void take_line();
  bool passes_filter(bool has_entry);
  void show_line(bool has_entry);
  void show(std::string_view message);
  void check_number();
  void check_number(std::string_view writer, std::uint64_t seq, const ErrorLine& line);

  BufferedOutput& output_;
  LineReporter& reporter_;
  LineRenderer& renderer_;
  RenderingParts parts_;
  const bool needs_messages_;
  qz_LOG_EntryLine line_;
  std::function<void()> on_no_memory_;
  const LineTail::Place* place_in_log_ = nullptr;  // of a line that is read from the tail
  std::uint64_t lines_ = 0;
  const char* part_file_ = nullptr;  // of a part of a log that is read
  std::uint64_t lines_before_ = 0;   // that part
  RenderedCounts counts_;
  std::uint64_t numbers_ = 0;  // that were reported as missing or doubled
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H
