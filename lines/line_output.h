#ifndef QZLOG_LINES_LINE_OUTPUT_H
#define QZLOG_LINES_LINE_OUTPUT_H

#include <cstddef>
#include <cstring>
#include <string>

namespace qzlog {

/// Appends to a text what is put together piece by piece: on the stack, which most lines never leave before they are
/// complete. Unless finish() was reached the text is as it was. Throws std::bad_alloc.
class LineOutput {
 public:
  static constexpr std::size_t kChunkBytes = 2048;

  // The chunk is left uninitialised.
  // cppcheck-suppress uninitMemberVar
  explicit LineOutput(std::string& target) : target_(target), size_before_(target.size()) {}
  ~LineOutput() {
    if (!is_finished_) target_.resize(size_before_);
  }
  LineOutput(const LineOutput&) = delete;
  LineOutput& operator=(const LineOutput&) = delete;

  /// Room for `count` bytes, kChunkBytes at most, which the caller fills and then counts in.
  char* reserve(std::size_t count) { return end_ = reserve_behind(end_, count); }
  /// The same for a writer that knows by itself where what it has written ends, so that the compiler can keep that in a
  /// register: what it writes next goes to what this returns. The output learns of it by count_up_to().
  char* reserve_behind(char* end, std::size_t count) {
    if (count > static_cast<std::size_t>(chunk_ + kChunkBytes - end)) [[unlikely]]
      return start_again_behind(end);
    return end;
  }
  char* end() { return end_; }
  void count_in(std::size_t count) { end_ += count; }
  /// The same by where the text ends that was written to what reserve() gave.
  void count_up_to(char* end) { end_ = end; }

  void append(char character) {
    *reserve(1) = character;
    ++end_;
  }
  template <std::size_t size>
  void append(const char (&literal)[size]) {
    std::memcpy(reserve(size - 1), literal, size - 1);
    end_ += size - 1;
  }
  /// Of any length.
  void append(const char* text, std::size_t length) {
    if (length > kChunkBytes) {
      flush();
      target_.append(text, length);
      return;
    }
    std::memcpy(reserve(length), text, length);
    end_ += length;
  }
  void finish() {
    flush();
    is_finished_ = true;
  }

 private:
  [[gnu::noinline]] char* start_again_behind(char* end) {
    end_ = end;
    flush();
    return end_;
  }
  void flush() {
    target_.append(chunk_, end_);
    end_ = chunk_;
  }

  std::string& target_;
  std::size_t size_before_;
  bool is_finished_ = false;
  char* end_ = chunk_;
  char chunk_[kChunkBytes];
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_OUTPUT_H
