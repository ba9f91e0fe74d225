#include "tools/transport/received_source.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qzlog_tool {
namespace {

std::vector<qzlog_received> records_of(const std::vector<std::string>& lines) {
  std::vector<qzlog_received> records;
  for (const std::string& line : lines) {
    qzlog_received& record = records.emplace_back();
    record.line = {line.data(), line.size()};
    record.token = records.size();
  }
  return records;
}

std::string read(ReceivedSource& source, std::size_t size) {
  std::string text(size, '\0');
  text.resize(source.Read(text.data(), size));
  return text;
}

TEST(ReceivedSource, Lines_AreGivenOneByOneInPieces) {
  const std::vector<std::string> lines = {"abc", "", "d\ne"};
  const std::vector<qzlog_received> records = records_of(lines);
  ReceivedSource source;
  EXPECT_THROW(read(source, 8), ReceivedSource::NoMore);
  source.give(records);
  EXPECT_EQ(source.given(), 0U);
  EXPECT_EQ(read(source, 2), "ab");
  EXPECT_EQ(read(source, 8), "c\n");
  EXPECT_EQ(source.given(), 1U);
  EXPECT_EQ(source.current().token, 1U);
  EXPECT_EQ(read(source, 8), "\n");
  EXPECT_EQ(read(source, 8), "d e\n");
  EXPECT_EQ(source.current().token, 3U);
  EXPECT_THROW(read(source, 8), ReceivedSource::NoMore);
  source.give(std::span(records).first(1));
  EXPECT_EQ(read(source, 8), "abc\n");
}

TEST(ReceivedSource, RecordWithoutBytes_IsAnEmptyLine) {
  const qzlog_received record = {};
  ReceivedSource source;
  source.give({&record, 1});
  EXPECT_EQ(read(source, 8), "\n");
}

}  // namespace
}  // namespace qzlog_tool
