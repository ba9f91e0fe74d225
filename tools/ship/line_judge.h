#ifndef QZLOG_TOOLS_SHIP_LINE_JUDGE_H
#define QZLOG_TOOLS_SHIP_LINE_JUDGE_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/entry_choice.h"
#include "tools/merge/definition_sets.h"
#include "tools/ship/line_taker.h"

namespace qzlog_tool {

/// Decides which lines of a log are wanted, block by block, by reading them as entries.
class LineJudge : private qz_LOG_ByteSource, private qz_LOG_LineErrorHandler {
 public:
  /// `sets` where there are several definitions, else null. Both have to outlive this object.
  LineJudge(EntryChoice& choice, DefinitionSets* sets);

  /// One for each line feed; the block ends with one.
  std::vector<LineVerdict> judge(std::string_view block);

 private:
  struct EndOfBlock {};

  std::size_t Read(char* buffer, std::size_t size) override;
  void TakeLineError(const qz_LOG_LineError& error) override;

  EntryChoice& choice_;
  LineDefinitions definitions_;
  qz_LOG_EntryReader reader_;
  qz_LOG_EntryLine line_;
  std::string_view rest_;     // that the reader has not got yet
  std::uint64_t before_ = 0;  // lines of former blocks
  std::vector<LineVerdict> verdicts_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_LINE_JUDGE_H
