#ifndef QZLOG_TESTS_SUPPORT_DEBUG_LOG_FILE_H
#define QZLOG_TESTS_SUPPORT_DEBUG_LOG_FILE_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/support/working_folder.h"

namespace qz_test {

using Texts = std::vector<std::string>;

/// The three variable parts of a record's prefix, and where in the text it ends.
struct RecordPrefix {
  std::string time;
  long pid;
  long tid;
  std::size_t end;
};

/// The prefix "YYYY/MM/DD HH:MM:SS(pid=P)(tid=T):" when one stands at `position` of `text`.
std::optional<RecordPrefix> parse_record_prefix(const std::string& text, std::size_t position);

/// Runs the test in a working directory of its own with the debug log at `level`; the end restores both.
class DebugLogFile {
 public:
  explicit DebugLogFile(int level = 9);
  ~DebugLogFile();

  /// "" when there is no file.
  std::string text() const { return folder_.read(kName); }
  bool exists() const { return folder_.has(kName); }
  const TempDir& folder() const { return folder_; }

  /// What the caller wrote in each record, line break included. A test failure when the file does not begin with a
  /// record prefix or a prefix names another process.
  Texts records() const;
  /// The same with the line number of a leading "source:123 " replaced by "#".
  Texts unnumbered_records() const;
  /// Forgets what was written so far.
  void clear() const { std::filesystem::remove(folder_.path(kName)); }

  static constexpr const char* kName = "zrk_debug.log";

 private:
  TempDir folder_;
  WorkingFolder working_folder_;
  unsigned previous_level_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_DEBUG_LOG_FILE_H
