// Reading from topics, alone and in groups.
#include <gtest/gtest.h>

#include "tests/ship/kafka/kafka_fixture.h"

namespace qzlog_test {
namespace {

class KafkaReading : public KafkaFixture {
 protected:
  KafkaReading() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
  }
  /// Messages of different keys, so that all partitions have some.
  void deliver(int first, int last) const {
    append("logs/s.20261121.0001", lines(first, last));
    EXPECT_EQ(ship_to(cluster_.url(), "--option key=N").err, "");
  }
  std::string command(const std::string& more = "") const {
    return "timeout 60 $QZLOG render --definitions d.yaml --from " + cluster_.url() + ' ' + more;
  }
  static std::multiset<int> numbers(const std::string& text) {
    std::multiset<int> found;
    std::istringstream stream(text);
    for (int number = 0; stream >> number;) found.insert(number);
    return found;
  }
  static std::multiset<int> range(int first, int last) {
    std::multiset<int> wanted;
    for (int number = first; number <= last; ++number) wanted.insert(number);
    return wanted;
  }
};

TEST_F(KafkaReading, Alone_FromTheBeginningToTheEnd) {
  deliver(1, 3000);
  const CommandResult result = run(command());
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(numbers(result.out) == range(1, 3000)) << numbers(result.out).size();
}

TEST_F(KafkaReading, Head_EndsWithRecordsThatNobodyWants) {
  deliver(1, 3000);
  const CommandResult result = run(command("--head 3"));
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(numbers(result.out).size(), 3U);
}

TEST_F(KafkaReading, EmptyTopic_EndsAtOnce) {
  EXPECT_EQ(run(command()).out, "");
  EXPECT_EQ(run(command("--start now")).status, 0);
  deliver(1, 10);
  EXPECT_EQ(run(command("--start now")).out, "");
}

TEST_F(KafkaReading, Sequence_IsTheNumberInEachPartition) {
  append("logs/s.20261121.0001", lines(1, 100));
  EXPECT_EQ(ship_to(cluster_.url()).err, "") << "one key, one partition";
  EXPECT_TRUE(numbers(run(command("--start sequence=90")).out) == range(91, 100));
}

// Members are given up soon: the brokers of the test wait for one that has left, too.
const std::string kSoon = " --option rdkafka.session.timeout.ms=6000 --option rdkafka.heartbeat.interval.ms=500 ";

TEST_F(KafkaReading, TwoOfAGroup_ShareTheRecords) {
  deliver(1, 4000);
  const CommandResult result =
      run(command("--group g" + kSoon + "> one &") + command("--group g" + kSoon + "> two; wait"));
  EXPECT_EQ(result.status, 0) << result.err;
  // What one had read when the other came is read again.
  const std::multiset<int> all = numbers(read("one") + read("two"));
  const std::set<int> each(all.begin(), all.end());
  EXPECT_EQ(each.size(), 4000U);
  EXPECT_EQ(*each.begin(), 1);
  EXPECT_EQ(*each.rbegin(), 4000);
  EXPECT_EQ(run(command("--group g")).out, "") << "all is settled";
  EXPECT_TRUE(numbers(run(command("--group other")).out) == range(1, 4000));
}

TEST_F(KafkaReading, ReaderOfAGroupThatIsKilled_IsTakenOver) {
  deliver(1, 4000);
  run("timeout -s KILL 3 " + command("--group g --follow" + kSoon).substr(11) + " | head -c 2000 > killed");
  const CommandResult rest = run(command("--group g --unique" + kSoon));
  EXPECT_EQ(rest.status, 0) << rest.err;
  std::multiset<int> all = numbers(read("killed").substr(0, read("killed").rfind('\n')) + '\n' + rest.out);
  EXPECT_EQ(std::set<int>(all.begin(), all.end()).size(), 4000U);
}

}  // namespace
}  // namespace qzlog_test
