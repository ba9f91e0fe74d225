#ifndef QZLOG_TOOLS_CHOICE_LINE_TAIL_H
#define QZLOG_TOOLS_CHOICE_LINE_TAIL_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// The last lines of those that were chosen, as they were read, so that what is shown of them is made for these alone.
/// To show them, read them once more:
///
///   for (...) if (choice.takes(line)) tail.add(line);
///   qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(tail, "");
///   while (reader.Next(line)) show(line, tail.place(line.GetLine()));
class LineTail : public qz_LOG_ByteSource {
 public:
  /// How much memory the lines may take. Where the last lines take more, there are fewer of them; the last one is
  /// always kept.
  static constexpr std::size_t kMostBytes = std::size_t{32} << 20;

  /// Where a line was read.
  struct Place {
    const std::string* file = nullptr;  ///< lives as long as the tail
    std::uint64_t line = 0;
    std::uint64_t offset = 0;
  };

  /// `count` is 1 or more.
  explicit LineTail(std::size_t count, std::size_t most_bytes = kMostBytes) : count_(count), most_bytes_(most_bytes) {}

  /// Keeps a line in place of the first of so many.
  void add(const qz_LOG_EntryLine& line);
  /// How many of the wanted lines are not there because all of them take too much memory.
  std::uint64_t dropped() const;

  /// Gives the lines out one after the other, each with a line feed. After that no line is added any more.
  std::size_t Read(char* buffer, std::size_t size) override;
  /// Of a line by its number among those given out, from 1.
  const Place& place(std::uint64_t number) const { return lines_[static_cast<std::size_t>(number - 1)].place; }
  std::size_t size() const { return lines_.size(); }

 private:
  struct Line {
    std::string text;  // with its line feed
    Place place;
  };

  static std::size_t bytes_of(const Line& line) { return sizeof line + line.text.capacity(); }
  const std::string* find_file(const char* name);
  void drop_first();

  std::size_t count_;
  std::size_t most_bytes_;
  std::size_t bytes_ = 0;
  std::uint64_t added_ = 0;
  std::deque<std::string> files_;
  std::deque<Line> lines_;
  std::size_t read_lines_ = 0;
  std::size_t read_bytes_ = 0;  // of the next line
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_LINE_TAIL_H
