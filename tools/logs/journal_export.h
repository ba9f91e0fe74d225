#ifndef QZLOG_TOOLS_LOGS_JOURNAL_EXPORT_H
#define QZLOG_TOOLS_LOGS_JOURNAL_EXPORT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// The lines of entries in the systemd journal as it is exported (`journalctl -o export`): the values of the field
/// QZLOG_ENTRY, in their order. Takes bytes as they come, in pieces of any size, and no more memory than the longest of
/// them; what other fields hold is passed over.
class JournalExport {
 public:
  /// Appends what `bytes` have of lines to `out`. Each line ends with a line feed; line feeds in a value, which no line
  /// of ours has, become blanks.
  void take(std::string_view bytes, std::string& out);
  /// Whether the export broke off in a field of a line.
  bool is_inside_line() const { return is_wanted_ && (part_ == Part::kText || part_ == Part::kBinary); }

 private:
  /// What comes next.
  enum class Part {
    kName,    ///< of a field, up to "=" or the line feed in front of a length; an empty one ends a message
    kText,    ///< a value, up to a line feed
    kLength,  ///< of a value, in eight bytes, the lowest first
    kBinary   ///< such a value, and a line feed
  };

  std::size_t take_name(std::string_view bytes);
  std::size_t take_text(std::string_view bytes, std::string& out);
  std::size_t take_length(std::string_view bytes);
  std::size_t take_binary(std::string_view bytes, std::string& out);
  void begin_value(Part part);

  static constexpr std::size_t kMostName = 64;

  Part part_ = Part::kName;
  bool is_wanted_ = false;
  std::array<char, kMostName + 1> name_ = {};  // its first bytes
  std::size_t name_bytes_ = 0;
  std::uint64_t length_ = 0;  // as far as it was read; then what of the value is to come
  unsigned length_bytes_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_JOURNAL_EXPORT_H
