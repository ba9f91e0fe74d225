// A shipper that is killed again and again while a sink writes and rotates: what was written is what was received.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <thread>

#include "qzlog/file_sink.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/child_process.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/ship/ship_fixture.h"
#include "tools/ship/line_parts.h"

namespace qzlog_test {
namespace {

/// The long form, of `./dev stress`, has 300 kills; the other one 20.
int kills() { return std::getenv("QZLOG_STRESS") != nullptr ? 300 : 20; }

class ShipKilled : public ShipFixture {
 protected:
  ShipKilled() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    EXPECT_EQ(run("$QZLOG compile d.yaml -o d.ldf").err, "");
  }

  /// Writes, and begins another file each 100 ms, until the file "enough" is there.
  int write_until_enough() const {
    qz_LOG_LogConfig::SetDefinitionPath(folder_.path("d.ldf").c_str());
    qz_LOG_FileSinkSettings settings;
    settings.folder = folder_.path("logs");
    settings.prefix = "s";
    settings.way = qz_LOG_FileSinkSettings::kWrite;
    qz_LOG_FileSink sink(settings);
    auto next = std::chrono::steady_clock::now();
    for (unsigned number = 1; !folder_.has("enough"); ++number) {
      qz_LOG_LogEntry entry(1, number % 10);
      entry.AddAttrib4u("N", number);
      if (!sink.Write(entry)) return 1;
      if (number % 20 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
      if (std::chrono::steady_clock::now() < next) continue;
      if (!sink.Rotate()) return 2;
      next += std::chrono::milliseconds(100);
    }
    return sink.Close(60'000) == 0 ? 0 : 3;
  }

  std::set<std::string> written() const {
    std::set<std::string> identities;
    qzlog_tool::LinePartsFinder finder;
    for (const auto& file : std::filesystem::directory_iterator(folder_.path("logs"))) {
      if (file.path().filename().string().starts_with('.')) continue;
      std::ifstream log(file.path());
      for (std::string text; std::getline(log, text);) {
        qzlog_tool::LineParts parts;
        EXPECT_TRUE(finder.find(text, parts)) << text;
        identities.insert(std::string(parts.writer) + '/' + std::to_string(parts.seq));
      }
    }
    return identities;
  }

  /// Kills shippers with these options, and lets a last one end with others.
  void kill_shippers(const std::vector<std::string>& more, const std::vector<std::string>& last_more = {}) {
    qz_test::ChildProcess writer([this] { return write_until_enough(); });
    for (int count = 0; count < kills(); ++count) {
      Shipper shipper(folder_.path(), arguments(more));
      // Most of them have begun to send by then, some have not, and some have got far.
      std::this_thread::sleep_for(std::chrono::milliseconds(random_.below(250)));
      shipper.send(SIGKILL);
      EXPECT_EQ(shipper.wait(), -SIGKILL) << read("said");
    }
    write("enough", "");
    EXPECT_EQ(writer.wait(), 0);
    std::vector<std::string> words = last_more;
    words.push_back("--once");
    Shipper last(folder_.path(), arguments(words));
    EXPECT_EQ(last.wait(), 0) << read("said");
  }

  std::set<std::string> identities_received() const {
    std::set<std::string> identities;
    for (const auto& [identity, count] : received()) identities.insert(identity);
    return identities;
  }
  /// Lines that came more than once, of all that came.
  void print_doubles(const char* what) const {
    int all = 0;
    const std::map<std::string, int> counts = received();
    for (const auto& [identity, count] : counts) all += count;
    std::printf("%s: %zu lines, %zu doubles, %d kills\n", what, counts.size(),
                static_cast<std::size_t>(all) - counts.size(), kills());
  }

  qz_test::SeededRandom random_;
};

TEST_F(ShipKilled, AtRandomMoments_EveryLineIsReceived) {
  kill_shippers({});
  const std::set<std::string> expected = written();
  EXPECT_GT(expected.size(), 500U);
  EXPECT_EQ(identities_received(), expected);
  print_doubles("receiver that keeps doubles");
}

TEST_F(ShipKilled, ReceiverThatDropsDoubles_EveryLineOnce) {
  kill_shippers({"--option", "drop-doubles=yes"}, {"--option", "drop-doubles=yes"});
  EXPECT_EQ(identities_received(), written());
  for (const auto& [identity, count] : received()) EXPECT_EQ(count, 1) << identity;
  print_doubles("receiver that drops doubles");
}

TEST_F(ShipKilled, ReceiverThatFailsToo_EveryLineIsReceived) {
  kill_shippers({"--option", "cut=20", "--option", "fail=20", "--option", "again=5", "--batch", "50"});
  EXPECT_EQ(identities_received(), written());
  print_doubles("receiver that fails");
}

}  // namespace
}  // namespace qzlog_test
