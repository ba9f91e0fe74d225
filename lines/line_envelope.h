#ifndef QZLOG_LINES_LINE_ENVELOPE_H
#define QZLOG_LINES_LINE_ENVELOPE_H

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

namespace qzlog {

/// What a writer of lines puts in front of each: `{"writer":"HOST/PID/START","seq":N,"written":"TIME","definitions":
/// "DIGEST",`. An entry's own part (append_entry_body), or another member, follows; it can be made beforehand, so that
/// a head takes little time where lines get their numbers. Used by one thread at a time.
class LineEnvelope {
 public:
  /// The most bytes of the writer's text as it stands in a line, without its quotes.
  static constexpr std::size_t kMaxWriter = 128;
  /// The most bytes that write_head writes.
  static constexpr std::size_t kMaxHead = 320;

  /// The writer's text is made JSON here, once for all. One that is longer than kMaxWriter then is cut behind a
  /// character. QZX_memory_alloc.
  explicit LineEnvelope(std::string_view writer);

  /// Writes a head to `target`, which has room for kMaxHead bytes, and returns its end; no terminator. `written` is the
  /// time since 1970-01-01 00:00:00 GMT. The digest is the one of the definition files that are loaded; it is left out
  /// when there is none, or nobody has asked for it: append_entry_body does. Takes no lock and no memory.
  char* write_head(char* target, unsigned long long seq, const std::timespec& written) noexcept;
  /// The same in front of `end`, where a body begins, behind room for kMaxHead bytes. Returns the head's beginning.
  char* write_head_before(char* end, unsigned long long seq, const std::timespec& written) noexcept;
  /// The same at the end of a text. When memory runs out (std::bad_alloc) the text is as it was.
  void append_head(std::string& out, unsigned long long seq, const std::timespec& written);

 private:
  static constexpr std::size_t kBlock = 32;
  static_assert(kMaxHead % kBlock == 0);

  void renew(unsigned long long seq, const std::timespec& written) noexcept;
  void make_head(unsigned long long seq, std::time_t second, const char* digest) noexcept;
  void count_up() noexcept;
  char* end_of_head() { return head_ + kMaxHead; }

  std::string beginning_;  // up to the number
  // The next head, which differs from the last one in few places, at the end of its room. In whole blocks it is copied
  // by a few instructions.
  char head_[kMaxHead + kBlock] = {};
  std::size_t head_bytes_ = 0;  // 0: there is none yet
  std::size_t seq_place_ = 0;   // how far before the end of the head its number ends, and its fraction begins
  std::size_t fraction_place_ = 0;
  // What the head says, while there is one.
  unsigned long long seq_ = 0;
  std::time_t second_ = 0;
  const char* digest_ = nullptr;  // "" where it is left out; digests live as long as the process
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_ENVELOPE_H
