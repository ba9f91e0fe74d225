#ifndef QZLOG_MESSAGE_TEMPLATE_WALK_H
#define QZLOG_MESSAGE_TEMPLATE_WALK_H

#include <optional>

namespace qzlog {

/// Where a walk through a template ended.
template <typename Position>
struct TemplateEnd {
  Position start;     ///< of the text that no part was made of yet
  Position position;  ///< behind the last percent sign that was looked at
};

/// Goes through a template from one percent sign to the next. Whatever the path and whoever asks, `reader` tells where
/// they stand
///
///     std::optional<Position> find_percent(Position from)   the next percent sign; none ends the walk
///     bool is_percent(Position at)                          whether one stands there; `at` may be the end
///
/// and takes the parts, in their order:
///
///     void take_text(Position begin, Position end)    may be empty
///     void take_escape(Position percent)              two percent signs
///     void take_format(Position percent)              the format character stands behind it, or the end
///     void take_name(Position begin, Position end)    not empty
///
/// The text before an escape is taken by nobody: stored templates rely on it.
template <typename Position, typename Reader>
TemplateEnd<Position> walk_template(Reader& reader) {
  enum class State { kText, kAfterFormat, kInName };
  State state = State::kText;
  Position start = 0;
  Position position = 0;
  while (const std::optional<Position> percent = reader.find_percent(position)) {
    position = *percent + 1;
    if (reader.is_percent(position)) {
      reader.take_escape(*percent);
      start = ++position;
    } else if (state == State::kText) {
      reader.take_text(start, *percent);
      reader.take_format(*percent);
      state = State::kAfterFormat;
    } else if (state == State::kAfterFormat) {
      state = State::kInName;
      start = position;
    } else {
      if (*percent != start) reader.take_name(start, *percent);
      state = State::kText;
      start = position;
    }
  }
  return {start, position};
}

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_TEMPLATE_WALK_H
