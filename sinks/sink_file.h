#ifndef QZLOG_SINKS_SINK_FILE_H
#define QZLOG_SINKS_SINK_FILE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog {

/// A line `key = value` of a section.
struct SinkSetting {
  std::string key;
  std::string value;
  unsigned line = 0;
};

struct SinkSection {
  const SinkSetting* find(std::string_view key) const;

  std::string name;
  unsigned line = 0;
  std::vector<SinkSetting> settings;
};

/// A file that describes sinks, as sections of settings, each of which is there once. std::bad_alloc.
class SinkFile {
 public:
  static constexpr std::size_t kMostBytes = 1U << 20;
  static constexpr std::size_t kMostSections = 256;

  /// Throws QZX_logging_file_operation_failed "FILE: REASON", QZX_logging_illegal_argument "FILE:LINE: ...".
  static SinkFile read(const std::string& path);
  /// The same from a text, for what it says of itself.
  SinkFile(std::string path, std::string_view text);

  const std::string& path() const { return path_; }
  const std::vector<SinkSection>& sections() const { return sections_; }
  /// Null when there is none.
  const SinkSection* find(std::string_view name) const;

  /// Throws QZX_logging_illegal_argument "FILE:LINE: TEXT".
  [[noreturn]] void refuse(unsigned line, const std::string& text) const;
  /// The beginning of such a text.
  std::string place(unsigned line) const { return path_ + ':' + std::to_string(line) + ": "; }

 private:
  void take_line(std::string_view text, unsigned line);
  void begin_section(std::string_view text, unsigned line);
  void take_setting(std::string_view text, unsigned line);

  std::string path_;
  std::vector<SinkSection> sections_;
};

/// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SINK_FILE_H
