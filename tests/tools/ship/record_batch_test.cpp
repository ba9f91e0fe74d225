#include "tools/ship/record_batch.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

class RecordBatchTest : public ::testing::Test {
 protected:
  void add(FileProgress& file, std::uint64_t end, std::string_view line = "{}") {
    LineParts parts;
    parts.writer = "w";
    parts.event = "EVENT";
    parts.level = 4;
    batch_.add(line, parts, "id" + std::to_string(end), {&file, end - 1, end});
  }
  std::string waiting() {
    std::string text;
    batch_.waiting("shop", records_, numbers_);
    for (const qzlog_record& record : records_) {
      text.append(record.identity.bytes, record.identity.size).append(" ");
    }
    return text;
  }

  RecordBatch batch_{{.records = 3, .bytes = 100}};
  FileProgress one_;
  FileProgress two_;
  std::vector<qzlog_record> records_;
  std::vector<std::size_t> numbers_;
};

TEST_F(RecordBatchTest, Records_SayWhatWasAdded) {
  add(one_, 10, R"({"a":1})");
  EXPECT_EQ(waiting(), "id10 ");
  const qzlog_record& record = records_[0];
  EXPECT_EQ(std::string(record.line.bytes, record.line.size), R"({"a":1})");
  EXPECT_EQ(std::string(record.writer.bytes, record.writer.size), "w");
  EXPECT_EQ(std::string(record.event.bytes, record.event.size), "EVENT");
  EXPECT_EQ(std::string(record.product.bytes, record.product.size), "shop");
  EXPECT_EQ(record.level, 4);
}

TEST_F(RecordBatchTest, Limits_AreOfRecordsAndBytesButOneIsAlwaysTaken) {
  EXPECT_TRUE(batch_.has_room_for(1000));
  add(one_, 1, std::string(90, ' '));
  EXPECT_FALSE(batch_.has_room_for(20));
  EXPECT_TRUE(batch_.has_room_for(2));
  add(one_, 2, "");
  add(one_, 3, "");
  EXPECT_FALSE(batch_.has_room_for(0));
}

TEST_F(RecordBatchTest, Finish_MovesEachFileToItsFirstRecordThatWaits) {
  add(one_, 10);
  add(two_, 5);
  batch_.pass_over("id20", {&one_, 19, 20});
  batch_.pass_over("id21", {&one_, 20, 21});
  add(one_, 30);
  batch_.settle(0);
  EXPECT_EQ(waiting(), "id5 id30 ");
  batch_.finish();
  EXPECT_EQ(one_.settled, 21U);
  EXPECT_EQ(one_.identity, "id21");
  EXPECT_EQ(two_.settled, 0U);
  EXPECT_TRUE(batch_.is_empty());
}

TEST_F(RecordBatchTest, RecordBehindOneThatWaits_IsNotPassed) {
  add(one_, 10);
  add(one_, 20);
  batch_.settle(1);
  batch_.finish();
  EXPECT_EQ(one_.settled, 0U);
}

}  // namespace
}  // namespace qzlog_tool
