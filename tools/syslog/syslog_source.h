#ifndef QZLOG_TOOLS_SYSLOG_SYSLOG_SOURCE_H
#define QZLOG_TOOLS_SYSLOG_SYSLOG_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// What came of messages of syslog.
struct SyslogCounts {
  std::uint64_t entries = 0;     ///< messages that gave a line
  std::uint64_t omitted = 0;     ///< the entry was too long for the message
  std::uint64_t broken = 0;      ///< what there is of the entry is not whole
  std::uint64_t others = 0;      ///< messages of others
  std::uint64_t first_lost = 0;  ///< the number of the first that was omitted or broken; 0 where none was
};

/// The lines of the entries in messages of syslog, as a file has them, one on a line, or a stream of messages behind
/// their number of bytes (RFC 6587). A message without an entry becomes an empty line, so that the number of a line is
/// that of its message.
class SyslogSource : public qz_LOG_ByteSource {
 public:
  /// Longer messages are broken.
  static constexpr std::size_t kLongestMessage = 40U << 20;

  /// `messages` has to outlive this object.
  explicit SyslogSource(qz_LOG_ByteSource& messages) : messages_(messages) {}

  /// Throws what the other source throws.
  std::size_t Read(char* buffer, std::size_t size) override;

  const SyslogCounts& counts() const noexcept { return counts_; }

 private:
  /// What the first message shows; the text of a later one says nothing about it.
  enum class Framing { kUnknown, kLines, kCounted };

  bool read_more();
  bool take_message();
  bool take_counted(std::string_view text, std::size_t begin, std::size_t bytes);
  bool take_line(std::string_view text);
  void take_whole(std::string_view message);
  void lose(std::uint64_t& count);
  bool skip_rest_of_line();
  std::string_view unread() const { return std::string_view(bytes_).substr(begin_); }

  qz_LOG_ByteSource& messages_;
  SyslogCounts counts_;
  std::string room_;   // for what is read next
  std::string bytes_;  // that were read
  std::size_t begin_ = 0;
  std::size_t searched_ = 0;  // bytes of them that have no line feed
  bool skips_line_ = false;   // the rest of a line that is too long
  Framing framing_ = Framing::kUnknown;
  bool is_at_end_ = false;
  std::string line_;
  std::string out_;  // lines to be handed out
  std::size_t handed_out_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSLOG_SYSLOG_SOURCE_H
