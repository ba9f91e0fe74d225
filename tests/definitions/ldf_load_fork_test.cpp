#include <deque>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/definitions/table_test.h"
#include "tests/support/child_process.h"
#include "tests/support/settings_test.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

constexpr unsigned kIds = 400;
constexpr int kChildren = 6;
constexpr int kEntries = rounds(4000);
constexpr int kMostTold = 120;

/// A record is longer than what a stream reads ahead: nearly every one needs the file.
std::vector<LdfEntry> long_entries(unsigned first, unsigned last) {
  std::vector<LdfEntry> entries = numbered_entries(first, last);
  for (LdfEntry& entry : entries) entry.selector_messages = {{1, 1, "LONG", std::string(5000, '.')}};
  return entries;
}

/// How many of the entries of random IDs, more than are kept in memory, were refused or had another message than their
/// own.
int wrong_entries(unsigned seed) {
  RandomNumbers random(seed);
  int wrong = 0;
  for (int i = 0; i < kEntries; ++i) {
    const unsigned id = 1 + static_cast<unsigned>(random.below(kIds));
    try {
      qz_LOG_LogEntry entry(id, 1);
      entry.AddAttribStr("user", "someone");
      wrong += entry.FormatMessage() == "entry " + std::to_string(id) + " of someone" ? 0 : 1;
    } catch (const QZX_logging_all&) {
      ++wrong;
    }
  }
  return wrong;
}

class ForkedDefinitions : public SettingsTest {
 protected:
  void set_files() {
    const LdfFile std{.entries = long_entries(1, kIds / 2)};
    const LdfFile aux{.entries = long_entries(kIds / 2 + 1, kIds)};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", std.bytes()).c_str());
    qz_LOG_LogConfig::SetAuxDefinitionPath(folder_.write("aux.ldf", aux.bytes()).c_str());
  }

  SeededRandom random_;
};

TEST_F(ForkedDefinitions, MoreIdsThanTheCacheHolds_ParentAndChildrenReadTheirOwn) {
  set_files();
  EXPECT_EQ(wrong_entries(random_.seed() + 1), 0);
  std::deque<ChildProcess> children;
  for (unsigned child = 0; child < kChildren; ++child) {
    children.emplace_back([this, child] { return std::min(wrong_entries(random_.seed() + 2 + child), kMostTold); });
  }
  EXPECT_EQ(wrong_entries(random_.seed() + 100), 0) << "the parent";
  for (ChildProcess& child : children) EXPECT_EQ(child.wait(), 0);
}

TEST_F(ForkedDefinitions, ChildSetsAnotherFile_ParentKeepsItsOwn) {
  set_files();
  expect_child_succeeds([&] {
    const LdfFile other{.entries = numbered_entries(kIds + 1, kIds + 2)};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("other.ldf", other.bytes()).c_str());
    qz_LOG_LogEntry entry(kIds + 1, 1);
    entry.AddAttribStr("user", "someone");
    return entry.FormatMessage() == "entry 401 of someone" ? 0 : 1;
  });
  EXPECT_EQ(wrong_entries(random_.seed() + 1), 0);
}

}  // namespace
