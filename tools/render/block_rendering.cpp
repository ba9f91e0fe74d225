#include "tools/render/block_rendering.h"

#include <unistd.h>

#include "qzlog/entry_lines.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

BlockRendering::BlockRendering(const BlockOptions& options)
    : output_(TextBytes::kUtf8, is_escaped(STDOUT_FILENO)), times_(make_times(options.shown)) {
  if (!options.shown.shows_messages_alone()) {
    presentation_ =
        make_presentation(options.shown, place_of_standard_output(), options.events, times_, ShownRemarks::kLeaveOut);
    shown_.emplace(*presentation_, output_, options.shown.may_have_colour() && stdout_has_colour(), nullptr);
  }
  if (options.choice.is_given()) choice_.emplace(options.choice, options.known, options.clock);
  if (options.filter.active) filter_.emplace(options.filter);
  rendering_.emplace(output_, errors_, renderer_,
                     RenderingParts{.shown = shown_ ? &*shown_ : nullptr,
                                    .choice = choice_ ? &*choice_ : nullptr,
                                    .filter = filter_ ? &*filter_ : nullptr});
}

void BlockRendering::render(const LineBlock& block, RenderedBlock& result) {
  result.failure = nullptr;
  try {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(block.room.data(), block.size, &*rendering_);
    rendering_->render_part(reader, block.file->c_str(), block.lines_before);
  } catch (...) {
    result.failure = std::current_exception();
  }
  take(result);
}

void BlockRendering::abort(RenderedBlock& result) {
  rendering_->report_abort();
  take(result);
  result.is_aborted = true;
}

void BlockRendering::take(RenderedBlock& result) {
  output_.take(result.output);
  errors_.take(result.errors);
}

}  // namespace qzlog_tool
