#include "tools/report/source_excerpt.h"

#include <algorithm>

#include "tools/compiler/text/display_width.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kCut = "...";
constexpr std::size_t kTabWidth = 4;
constexpr std::size_t kWindowWidth = 100;           // columns of a line that is shown
constexpr std::size_t kColumnsBefore = 60;          // of them at most before the place, where the line is cut
constexpr std::uint32_t kMaximumColumn = 1U << 16;  // looking for a place walks over its line
constexpr std::size_t kMostBytes = 4096;            // of a line that is shown: characters may have no width

/// Walks over a line, character by character as they are shown.
class LineWalk {
 public:
  explicit LineWalk(std::string_view line) : line_(line) {}

  bool at_end() const { return offset_ == line_.size(); }
  std::size_t columns() const { return columns_; }

  /// What the next character looks like; valid until the next call.
  const std::string& next() {
    shown_.clear();
    if (is_plain(line_[offset_])) {
      ++columns_;
      return shown_.assign(1, line_[offset_++]);
    }
    if (line_[offset_] == '\t') {
      shown_.append(kTabWidth - columns_ % kTabWidth, ' ');
      ++offset_;
    } else {
      offset_ += append_printable(shown_, line_, offset_);
    }
    columns_ += display_width(shown_);
    return shown_;
  }

 private:
  std::string_view line_;
  std::size_t offset_ = 0;
  std::size_t columns_ = 0;
  std::string shown_;
};

/// How many blanks a line begins with; none in a line of blanks.
std::size_t first_word(std::string_view line) {
  const std::size_t found = line.substr(0, kMostBytes).find_first_not_of(" \t");
  return found == std::string_view::npos ? 0 : found;
}

std::size_t columns_before(std::string_view line, std::uint32_t column) {
  LineWalk walk(line);
  if (column == 0) column = static_cast<std::uint32_t>(first_word(line)) + 1;
  for (std::uint32_t passed = 1; passed < column && !walk.at_end(); ++passed) walk.next();
  return walk.columns();
}

/// A line is not cut where that would save nothing.
bool fits(std::string_view line) {
  constexpr std::size_t kWholeWidth = kWindowWidth + kCut.size();
  if (line.size() > kMostBytes) return false;
  LineWalk walk(line);
  while (!walk.at_end() && walk.columns() <= kWholeWidth) walk.next();
  return walk.columns() <= kWholeWidth;
}

/// The bytes of the line break at `offset`, 0 where there is none.
std::size_t line_break_size(std::string_view source, std::size_t offset) {
  if (source.substr(offset, 2) == "\r\n") return 2;
  const auto byte = static_cast<unsigned char>(source[offset]);
  if (byte != '\n' && byte != '\r' && byte < 0x80) return 0;
  const Utf8Character character = decode_utf8(source, offset);
  return is_line_break(character.code) ? character.size : 0;
}

std::size_t find_line_break(std::string_view source, std::size_t offset, LineBreaks breaks) {
  if (breaks == LineBreaks::kLineFeed) return source.find('\n', offset);
  // The first bytes of all line breaks.
  constexpr std::string_view kCandidates = "\n\r\xC2\xE2";
  offset = source.find_first_of(kCandidates, offset);
  while (offset < source.size() && line_break_size(source, offset) == 0) {
    offset = source.find_first_of(kCandidates, offset + 1);
  }
  return offset;
}

}  // namespace

std::optional<SourceExcerpt> make_excerpt(std::string_view line, std::uint32_t column) {
  if (column > kMaximumColumn) return std::nullopt;
  const std::size_t place = columns_before(line, column);
  const bool whole = fits(line);
  const std::size_t first = whole || place < kColumnsBefore ? 0 : place - kColumnsBefore;
  LineWalk walk(line);
  while (walk.columns() < first) walk.next();
  SourceExcerpt excerpt{std::string(first == 0 ? "" : kCut), place - walk.columns()};
  excerpt.caret += excerpt.line.size();
  const std::size_t end = walk.columns() + kWindowWidth + (whole ? kCut.size() : 0);
  while (!walk.at_end() && walk.columns() < end && excerpt.line.size() < kMostBytes) excerpt.line += walk.next();
  if (!walk.at_end()) excerpt.line += kCut;
  return excerpt;
}

SourceLines::SourceLines(std::string_view source, LineBreaks breaks, std::uint64_t first_line)
    : source_(source), breaks_(breaks), first_line_(first_line) {
  if (source_.starts_with(kByteOrderMark)) source_.remove_prefix(kByteOrderMark.size());
  starts_.push_back(0);
  for (std::size_t end = find_line_break(source_, 0, breaks_); end < source_.size();) {
    starts_.push_back(end + line_break_size(source_, end));
    end = find_line_break(source_, starts_.back(), breaks_);
  }
}

std::optional<SourceExcerpt> SourceLines::excerpt(TextPlace place) const {
  if (place.line < first_line_ || place.line - first_line_ >= starts_.size()) return std::nullopt;
  return make_excerpt(line(place.line - first_line_), place.column);
}

std::string_view SourceLines::line(std::size_t index) const {
  const std::string_view rest = source_.substr(starts_[index]);
  const std::size_t next = index + 1 < starts_.size() ? starts_[index + 1] - starts_[index] : rest.size();
  std::string_view line = rest.substr(0, std::min(find_line_break(rest.substr(0, next), 0, breaks_), next));
  if (breaks_ == LineBreaks::kLineFeed && line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace qzlog_compiler
