#ifndef QZLOG_TOOLS_RENDER_LINE_BLOCK_H
#define QZLOG_TOOLS_RENDER_LINE_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/logs/log_input.h"

namespace qzlog_tool {

/// Whole lines of a log, as a reader of entries takes them that knows nothing of the rest of it.
struct LineBlock {
  /// How many bytes are usual. A block ends with a line, and may so be longer.
  static constexpr std::size_t kUsualBytes = std::size_t{256} << 10;
  /// What comes of a line may take much more than the line: a long message, or an error.
  static constexpr std::uint64_t kMostLines = 2048;

  std::shared_ptr<const std::string> file = nullptr;
  std::vector<char> room = {};
  std::size_t size = 0;            ///< of the bytes in `room`
  std::uint64_t lines = 0;         ///< how many of the log's are in it
  std::uint64_t lines_before = 0;  ///< what the reader's numbers lack

  std::string_view bytes() const { return {room.data(), size}; }
};

/// Cuts a log into blocks, of which each begins with an empty line but the first: so a byte order mark is only looked
/// for where the log begins. What was read is handed out before more is waited for.
class LineBlockCutter {
 public:
  /// `before_wait` is called where reading may wait, and may have others wait meanwhile. `input` has to outlive this
  /// object.
  LineBlockCutter(LogInput& input, std::function<void()> before_wait);

  /// The next block. False at the end, with nothing in it. Throws what the input throws: the line that is read then is
  /// lost, as all behind it.
  bool fill(LineBlock& block);

 private:
  void begin(LineBlock& block);
  bool is_done(const LineBlock& block) const;
  void read_more(LineBlock& block);
  void skip_long_line(LineBlock& block);
  void find_line_end(const LineBlock& block, std::size_t from);
  void finish(LineBlock& block, std::size_t end);

  LogInput& input_;
  std::function<void()> before_wait_;
  std::shared_ptr<const std::string> file_;
  std::string rest_;             // read, and behind the block
  std::size_t lines_begin_ = 0;  // in the block, behind its empty line
  std::size_t lines_end_ = 0;    // in the block, behind its last whole line
  std::uint64_t lines_ = 0;      // of the blocks before
  bool at_end_ = false;
  std::exception_ptr failure_;  // of reading
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LINE_BLOCK_H
