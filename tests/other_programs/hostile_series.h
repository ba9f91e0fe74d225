#ifndef QZLOG_TESTS_OTHER_PROGRAMS_HOSTILE_SERIES_H
#define QZLOG_TESTS_OTHER_PROGRAMS_HOSTILE_SERIES_H

#include <string>
#include <string_view>
#include <vector>

#include "qzlog/file_sink.h"
#include "tests/support/settings_test.h"

namespace qz_test {

/// The files of a series, "work" in the folder logs, as a file sink writes them: entries with values of every type at
/// their limits, and with texts that JSON, UTF-8 and shells trip over, in every kind of code page and each way of
/// keeping. "Number" counts them from 0.
class HostileSeriesTest : public SettingsTest {
 protected:
  HostileSeriesTest();

  struct Written {
    std::string code_page;  ///< "" without ICU
    std::string stored;     ///< the bytes of its attribute Text
  };

  unsigned count() const { return static_cast<unsigned>(written_.size()); }
  const std::vector<Written>& written() const { return written_; }

  /// The files in order, and after them the lines that are kept as an example of each kind.
  std::vector<std::string> files() const;
  std::string series_pattern() const { return folder_.path("logs") + "/work.*"; }
  const std::string& golden() const { return golden_; }

 private:
  void write_all(const char* code_page, qz_LOG_FileSinkSettings::Way way);
  void write(qz_LOG_Sink& sink, const char* code_page, std::string_view text);

  std::vector<Written> written_;
  const std::string golden_;
};

/// Runs a line of shell: what it prints, with its errors, and how it ended.
struct ShellResult {
  int status;
  std::string output;
};
ShellResult run_shell(const std::string& line);

/// Whether the shell finds a program of this name.
bool has_program(const std::string& name);

}  // namespace qz_test

#endif  // QZLOG_TESTS_OTHER_PROGRAMS_HOSTILE_SERIES_H
