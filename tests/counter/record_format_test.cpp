#include "counter/record_format.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/counter/counter_fixture.h"

using namespace qzlog;

namespace {

using namespace qz_test;

const unsigned char* bytes_of(const std::string& record) {
  return reinterpret_cast<const unsigned char*>(record.data());
}

TEST(EncodeRecord, AnyNumbers_BigEndianAndReservedBytesAsInMemory) {
  CounterRecord record = {5, 2020, -1, INT_MIN, INT_MAX, 0x01020304, {0, 0}};
  std::memcpy(record.reserved, "reserved", 8);
  const RecordBytes bytes = encode_record(record);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
            record_bytes(2020, -1, INT_MIN, INT_MAX, 0x01020304, 5, "reserved"));
}

TEST(DecodeRecord, AnyBytes_EncodedAgainTheSame) {
  SeededRandom random;
  for (int i = 0; i < 1000; ++i) {
    const std::string record = random.text(kRecordBytes);
    const RecordBytes bytes = encode_record(decode_record(bytes_of(record)));
    ASSERT_EQ(std::string(bytes.begin(), bytes.end()), record);
  }
}

TEST(RecordPredicates, BytesAndNumbers_Agree) {
  SeededRandom random;
  const auto part = [&] { return static_cast<int>(random.between(0, 1)) * (random.one_in(2) ? 1 : INT_MIN); };
  for (int i = 0; i < 10000; ++i) {
    const std::string left = record_bytes(part(), part(), part(), part(), 1);
    const std::string right = record_bytes(part(), part(), part(), part(), 2, 31, "reserved");
    const CounterRecord left_record = decode_record(bytes_of(left));
    const CounterRecord right_record = decode_record(bytes_of(right));
    ASSERT_EQ(is_free_record(bytes_of(left)), is_free_record(left_record));
    ASSERT_EQ(is_same_combination(bytes_of(left), bytes_of(right)), is_same_combination(left_record, right_record));
    ASSERT_EQ(is_same_combination(left_record, right_record), left.substr(4, 16) == right.substr(4, 16));
  }
}

}  // namespace
