#ifndef QZLOG_SINKS_LINE_ROOM_H
#define QZLOG_SINKS_LINE_ROOM_H

#include <cstddef>
#include <string>

namespace qzlog {

/// The line that a thread is making. Its memory is used again, unless it was an unusually long one.
class LineRoom {
 public:
  /// An empty line behind so many bytes for what is put in front of it. std::bad_alloc.
  std::string& begin(std::size_t room_before = 0) {
    if (text_.capacity() > kMostKept) std::string().swap(text_);
    text_.resize(room_before);
    return text_;
  }

 private:
  static constexpr std::size_t kMostKept = 64U << 10;

  std::string text_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LINE_ROOM_H
