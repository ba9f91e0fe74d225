#include "tools/system/process_start.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

constexpr const char* kGermanName = "de.po";
constexpr const char* kEntries =
    "{\"id\":1006,\"time\":\"2026-11-21T08:15:30Z\"}\n"
    "{\"id\":4711}\n"
    "{\"id\":1006,\"time\":\"2026-11-20T08:15:30Z\"}\n";

/// A command with the files that it writes.
struct ClosedCase {
  std::string arguments;
  int status;
  std::vector<std::string> files;
  bool writes_results = false;  ///< to standard output
};

const std::vector<ClosedCase> kCases = {
    {"compile storage.yaml -o out.ldf --depfile out.d", 0, {"out.ldf", "out.d"}},
    {"compile storage.yaml --emit-json", 0, {}, true},
    {"render --definitions storage.yaml --count events entries.jsonl", 1, {"events.cnt"}, true},
    {"catalog extract storage.yaml -o out.pot --update de.po", 0, {"out.pot", kGermanName}},
    {"catalog build storage.yaml --po old.po -o messages", 0, {"messages/root.res", "messages/de.res"}},
    {"inspect storage.ldf", 0, {}, true},
    {"diff old.yaml storage.yaml", 1, {}, true},
    {"diff old.yaml no-such-file.yaml", 2, {}},
};

class ClosedDescriptors : public qzlog_test::CommandFixture {
 protected:
  ClosedDescriptors() {
    write("storage.yaml", qzlog_test::kStorageSource);
    write("entries.jsonl", kEntries);
    write("old.yaml", "version: \"1.0\"\nentries: []\n");
    prepare("$QZLOG compile storage.yaml -o storage.ldf");
    prepare("$QZLOG catalog extract storage.yaml --update de.po && mv de.po old.po");
    prepare("mkdir messages");
  }

  void prepare(const std::string& line) const { EXPECT_EQ(run(line).status, 0) << line; }

  /// All files with what they hold.
  std::set<std::pair<std::string, std::string>> files() const {
    std::set<std::pair<std::string, std::string>> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
      const std::string name = std::filesystem::relative(entry.path(), folder_.path()).string();
      if (entry.is_regular_file() && !name.starts_with("std")) files.emplace(name, read(name));
    }
    return files;
  }

  void begin_anew(const ClosedCase& row) const {
    for (const std::string& file : row.files) std::filesystem::remove(folder_.path(file));
  }

  /// What the command does where all are open, and results cannot be written if they are not to be.
  std::set<std::pair<std::string, std::string>> expected_files(const ClosedCase& row, bool output) const {
    begin_anew(row);
    const CommandResult result = run("$QZLOG " + row.arguments + (output ? "" : " >/dev/full"));
    EXPECT_EQ(result.status, !output && row.writes_results ? 2 : row.status) << row.arguments << result.err;
    return files();
  }
};

TEST_F(ClosedDescriptors, EachCombination_ChangesNoFileAndIsNoSilentSuccess) {
  for (const ClosedCase& row : kCases) {
    const auto expected_with_output = expected_files(row, true);
    const auto expected_without = row.writes_results ? expected_files(row, false) : expected_with_output;
    for (int closed = 0; closed < 8; ++closed) {
      const bool output = (closed & 2) == 0;
      begin_anew(row);
      const std::string line = "$QZLOG " + row.arguments + ((closed & 1) != 0 ? " <&-" : "") + (output ? "" : " >&-") +
                               ((closed & 4) != 0 ? " 2>&-" : "");
      const CommandResult result = run(line);
      EXPECT_EQ(result.status, !output && row.writes_results ? 2 : row.status) << line;
      EXPECT_EQ(files(), output ? expected_with_output : expected_without) << line;
      EXPECT_TRUE((closed & 4) == 0 || result.err.empty()) << line << result.err;
    }
  }
}

TEST_F(ClosedDescriptors, StandardInputThatIsRead_IsAnError) {
  const CommandResult result = run("$QZLOG compile - -o out.ldf <&-");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: cannot read '-': Bad file descriptor\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("out.ldf")));
}

using ProcessStart = ClosedDescriptors;

TEST_F(ProcessStart, FileSizeLimit_IsAnErrorAndNoSignal) {
  write("storage.ldf", "old");
  const auto before = files();
  const CommandResult result = run("(ulimit -f 0; $QZLOG compile storage.yaml -o storage.ldf 2>&1) | cat");
  EXPECT_EQ(result.out, "qzlog: error: cannot write 'storage.ldf': File too large\n");
  EXPECT_EQ(files(), before);
}

}  // namespace
