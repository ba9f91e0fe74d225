#ifndef QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H
#define QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H

#include <unistd.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/count/entry_counting.h"
#include "tools/render/gap_check.h"
#include "tools/render/line_errors.h"
#include "tools/render/line_renderer.h"
#include "tools/system/buffered_output.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

/// Renders lines of entries to standard output, from whichever files they come. One object at a time.
class EntryRendering : public qz_LOG_LineErrorHandler {
 public:
  /// Messages are made of `bytes`. `counting` and `gaps` are null where nothing is counted or checked. What the
  /// arguments refer to has to outlive this object.
  EntryRendering(TextBytes bytes, LineRenderer& renderer, EntryCounting* counting, GapCheck* gaps);
  ~EntryRendering() override;
  EntryRendering(const EntryRendering&) = delete;
  EntryRendering& operator=(const EntryRendering&) = delete;

  /// The lines of a reader that was made with this object as its handler, until its end. What its source throws goes
  /// on, and the rest may be rendered afterwards.
  void render(qz_LOG_EntryReader& reader);
  void TakeLineError(const qz_LOG_LineError& error) override;

  BufferedOutput& output() noexcept { return output_; }
  LineErrors& errors() noexcept { return errors_; }
  bool has_errors() const noexcept { return errors_.count() != 0; }

  /// Writes out what is held, and says which lines are missing.
  void finish();
  /// Says on stderr how many entries were read, passed and refused.
  void print_filter_summary();
  /// Says there what the check for gaps has seen.
  void print_gap_summary();

 private:
  static void report_abort(int signal);
  void report(const EntryError& error) { errors_.report(ShownLine::of(line_), error.rule, error.text); }
  void render_line();
  void check_number();
  void check_number(std::string_view writer, std::uint64_t seq, const ShownLine& line);
  void print(const std::string& line);

  BufferedOutput output_;
  LineRenderer& renderer_;
  EntryCounting* counting_;
  GapCheck* gaps_;
  ProgressLine progress_{"lines"};
  LineErrors errors_{output_, progress_};
  qz_LOG_EntryLine line_;
  std::uint64_t lines_ = 0;
  std::uint64_t entries_ = 0;
  std::uint64_t passed_ = 0;
  std::uint64_t refused_ = 0;
  std::uint64_t unread_ = 0;   // lines that the reader refused
  std::uint64_t numbers_ = 0;  // that were reported as missing or doubled
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ENTRY_RENDERING_H
