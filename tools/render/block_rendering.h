#ifndef QZLOG_TOOLS_RENDER_BLOCK_RENDERING_H
#define QZLOG_TOOLS_RENDER_BLOCK_RENDERING_H

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/choice/entry_choice.h"
#include "tools/render/entry_rendering.h"
#include "tools/render/held_errors.h"
#include "tools/render/line_block.h"
#include "tools/render/line_renderer.h"
#include "tools/render/render_filter.h"
#include "tools/shown/presentation.h"
#include "tools/shown/shown_options.h"
#include "tools/shown/shown_output.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// What came of a block.
struct RenderedBlock {
  std::string output = {};
  std::vector<HeldError> errors = {};
  std::exception_ptr failure = nullptr;  ///< thrown in place of the rest of it
  bool is_aborted = false;               ///< nothing may be rendered behind it
};

/// What renderings of several threads have in common. Refers to what is to outlive them.
struct BlockOptions {
  const ShownOptions& shown;
  const ShownEvents& events;
  const ChoiceOptions& choice;
  const KnownDefinitions& known;
  const ReaderClock& clock;
  const FilterOptions& filter;
};

/// Presentations as standard output gets them, of blocks of lines, into memory. One thread at a time.
class BlockRendering {
 public:
  explicit BlockRendering(const BlockOptions& options);

  /// Renders a block. What is thrown becomes the result's failure.
  void render(const LineBlock& block, RenderedBlock& result);
  /// While `render` is aborted: the result so far, with the line at hand as an error.
  void abort(RenderedBlock& result);

  const RenderedCounts& counts() const { return rendering_->counts(); }
  const EntryChoice* choice() const { return choice_ ? &*choice_ : nullptr; }

 private:
  void take(RenderedBlock& result);

  BufferedOutput output_;
  HeldErrors errors_{output_};
  LineRenderer renderer_{nullptr};
  ShownTimes times_;
  std::unique_ptr<Presentation> presentation_;
  std::optional<ShownOutput> shown_;
  std::optional<EntryChoice> choice_;
  std::optional<RenderFilter> filter_;
  std::optional<EntryRendering> rendering_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_BLOCK_RENDERING_H
