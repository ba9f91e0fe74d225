#ifndef QZLOG_TESTS_SHIP_KAFKA_KAFKA_FIXTURE_H
#define QZLOG_TESTS_SHIP_KAFKA_KAFKA_FIXTURE_H

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <thread>

#include "tests/ship/kafka/kafka_cluster.h"
#include "tests/tools/ship/ship_fixture.h"

namespace qzlog_test {

/// The command and a cluster of three brokers.
class KafkaFixture : public ShipFixture {
 protected:
  static constexpr int kPartitions = 16;  // each keeps 5 MB, and forgets what came before

  /// The long form, of `./dev cluster-test`, has more rounds and waits longer.
  static int quick_or_long(int quick, int longer) { return std::getenv("QZLOG_STRESS") != nullptr ? longer : quick; }
  static void pass(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

  std::vector<std::string> kafka_arguments(const std::vector<std::string>& more = {}) const {
    // All lines are of one host: with its name as their key they would fill one partition.
    std::vector<std::string> words = {"logs/s",     "--to",     cluster_.url(), "--state",
                                      "state.json", "--option", "key=none"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  CommandResult ship_to(const std::string& url, const std::string& more = "") const {
    return run("$QZLOG ship logs/s --to " + url + " --state state.json --once " + more);
  }

  /// Each line that was written is there; how often one is there again is said.
  void expect_all(int written) const {
    const std::vector<qz_test::KafkaRecord> records = cluster_.records();
    std::set<std::string> identities;
    for (const qz_test::KafkaRecord& record : records) identities.insert(record.identity);
    std::set<std::string> expected;
    for (int seq = 1; seq <= written; ++seq) expected.insert("h/1/2/" + std::to_string(seq));
    EXPECT_TRUE(identities == expected) << identities.size() << " of " << expected.size();
    std::printf("%d lines, %zu doubles in the topic\n", written, records.size() - identities.size());
  }

  /// Writes lines to a series that begins another file each 100 ms, while `faults` goes on; gives how many.
  int write_meanwhile(const std::function<void()>& faults) const {
    std::atomic<bool> is_enough{false};
    int written = 0;
    std::thread writer([&] {
      for (int file = 1; !is_enough; ++file) {
        const std::string digits = std::to_string(10000 + file).substr(1);
        for (int round = 0; round < 10; ++round) {
          append("logs/s.20261121." + digits, lines(written + 1, written + 10));
          written += 10;
          pass(10);
        }
      }
    });
    faults();
    is_enough = true;
    writer.join();
    return written;
  }

  /// A shipper at work while `faults` goes on; a last one delivers the rest.
  void ship_meanwhile(const std::function<void()>& faults) {
    Shipper shipper(folder_.path(), kafka_arguments());
    const int written = write_meanwhile(faults);
    shipper.end();
    EXPECT_EQ(Shipper(folder_.path(), kafka_arguments({"--once"})).wait(), 0) << read("said");
    expect_all(written);
  }

  qz_test::KafkaCluster cluster_{kPartitions};
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_SHIP_KAFKA_KAFKA_FIXTURE_H
