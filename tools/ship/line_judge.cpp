#include "tools/ship/line_judge.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace qzlog_tool {

LineJudge::LineJudge(EntryChoice& choice, DefinitionSets* sets)
    : choice_(choice),
      definitions_(sets, choice.line_choice()),
      reader_(qz_LOG_EntryReader::FromSource(*this, "", this)) {
  reader_.SetLineChoice(definitions_.line_choice());
}

std::vector<LineVerdict> LineJudge::judge(std::string_view block) {
  const auto lines = static_cast<std::size_t>(std::count(block.begin(), block.end(), '\n'));
  verdicts_.assign(lines, {.is_wanted = false});
  rest_ = block;
  try {
    while (reader_.Next(line_)) {
      if (choice_.takes(line_)) verdicts_.at(line_.GetLine() - before_ - 1).is_wanted = true;
    }
  } catch (const EndOfBlock&) {
    before_ += lines;
  }
  return std::move(verdicts_);
}

std::size_t LineJudge::Read(char* buffer, std::size_t size) {
  if (rest_.empty()) throw EndOfBlock();
  const std::size_t count = std::min(size, rest_.size());
  std::memcpy(buffer, rest_.data(), count);
  rest_.remove_prefix(count);
  return count;
}

void LineJudge::TakeLineError(const qz_LOG_LineError& error) {
  verdicts_.at(error.line - before_ - 1).fault =
      "it cannot be read, and so not be chosen: " + std::string(error.text) + " [" + error.rule + ']';
}

}  // namespace qzlog_tool
