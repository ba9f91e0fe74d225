// `qzlog ship` to brokers that fail: what was written is what the topic holds.
#include <gtest/gtest.h>

#include "tests/ship/kafka/kafka_fixture.h"

namespace qzlog_test {
namespace {

class KafkaFaults : public KafkaFixture {};

TEST_F(KafkaFaults, BrokersDownInTurn_EveryLineArrives) {
  ship_meanwhile([&] {
    for (int round = 0; round < quick_or_long(3, 60); ++round) {
      const int broker = 1 + round % qz_test::KafkaCluster::kBrokers;
      pass(300);
      cluster_.set_down(broker);
      pass(400);
      cluster_.set_up(broker);
    }
  });
}

TEST_F(KafkaFaults, AllBrokersDown_AreWaitedFor) {
  ship_meanwhile([&] {
    pass(300);
    for (int broker = 1; broker <= qz_test::KafkaCluster::kBrokers; ++broker) cluster_.set_down(broker);
    pass(quick_or_long(2000, 120000));
    for (int broker = 1; broker <= qz_test::KafkaCluster::kBrokers; ++broker) cluster_.set_up(broker);
  });
}

TEST_F(KafkaFaults, ErrorsThatPass_EveryLineArrives) {
  ship_meanwhile([&] {
    for (int round = 0; round < quick_or_long(5, 100); ++round) {
      pass(100);
      cluster_.fail_next(qz_test::KafkaCluster::kProduce,
                         {RD_KAFKA_RESP_ERR_NOT_LEADER_FOR_PARTITION, RD_KAFKA_RESP_ERR_NOT_ENOUGH_REPLICAS,
                          RD_KAFKA_RESP_ERR_REQUEST_TIMED_OUT, RD_KAFKA_RESP_ERR_LEADER_NOT_AVAILABLE});
    }
  });
}

TEST_F(KafkaFaults, SlowBrokers_EveryLineArrives) {
  for (int broker = 1; broker <= qz_test::KafkaCluster::kBrokers; ++broker) cluster_.set_delay(broker, 150);
  ship_meanwhile([&] { pass(quick_or_long(1500, 30000)); });
}

TEST_F(KafkaFaults, ShipperKilled_EveryLineArrives) {
  const int written = write_meanwhile([&] {
    for (int round = 0; round < quick_or_long(10, 300); ++round) {
      Shipper shipper(folder_.path(), kafka_arguments());
      pass(50 + round * 37 % 200);
      shipper.send(SIGKILL);
      EXPECT_EQ(shipper.wait(), -SIGKILL) << read("said");
    }
  });
  EXPECT_EQ(ship_to(cluster_.url(), "--option key=none").err, "");
  expect_all(written);
}

}  // namespace
}  // namespace qzlog_test
