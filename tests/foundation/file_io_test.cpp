#include "qzlog/file_io.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;
using qz_test::TempDir;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File open_file(const std::string& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode), std::fclose);
  if (file == nullptr) ADD_FAILURE() << "cannot open " << path;
  return file;
}

class BigEndianFile : public testing::Test {
 protected:
  File reading(std::string_view bytes) { return open_file(folder_.write("data", bytes), "rb"); }
  File writing() { return open_file(folder_.path("data"), "wb"); }
  std::string written() const { return folder_.read("data"); }

 private:
  TempDir folder_;
};

std::string bytes_of(unsigned value, int count) {
  std::string bytes;
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

TEST_F(BigEndianFile, Read4_Bytes00000102_Give258) {
  const File file = reading(std::string("\x00\x00\x01\x02", 4));
  unsigned value = 0;
  EXPECT_TRUE(qz_be_read_int4(file.get(), &value));
  EXPECT_EQ(value, 258U);
}

TEST_F(BigEndianFile, Read2_Bytes1234_Give4660) {
  const File file = reading("\x12\x34");
  unsigned short value = 0;
  EXPECT_TRUE(qz_be_read_int2(file.get(), &value));
  EXPECT_EQ(value, 4660);
}

TEST_F(BigEndianFile, Write4_One_Writes00000001) {
  File file = writing();
  unsigned value = 1;
  EXPECT_TRUE(qz_be_write_int4(file.get(), &value));
  EXPECT_EQ(value, 1U);
  file.reset();
  EXPECT_EQ(written(), std::string("\x00\x00\x00\x01", 4));
}

TEST_F(BigEndianFile, Read4_ThreeBytesLeft_FailsAndKeepsTheDestination) {
  const File file = reading("abc");
  unsigned value = 0xDEADBEEF;
  EXPECT_FALSE(qz_be_read_int4(file.get(), &value));
  EXPECT_EQ(value, 0xDEADBEEF);
}

TEST_F(BigEndianFile, ReadChunk_ZeroBytes_Succeeds) {
  const File file = reading("abc");
  char buffer = '#';
  EXPECT_TRUE(qz_read_data_chunk(file.get(), &buffer, 0));
  EXPECT_EQ(buffer, '#');
  EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST_F(BigEndianFile, ReadChunk_ZeroBytesAtTheEnd_Succeeds) {
  const File file = reading("");
  char buffer = '#';
  EXPECT_EQ(std::fgetc(file.get()), EOF);
  EXPECT_TRUE(qz_read_data_chunk(file.get(), &buffer, 0));
}

TEST_F(BigEndianFile, WriteChunk_ZeroBytes_SucceedsAndWritesNothing) {
  File file = writing();
  char buffer = '#';
  EXPECT_TRUE(qz_write_data_chunk(file.get(), &buffer, 0));
  file.reset();
  EXPECT_EQ(written(), "");
}

TEST_F(BigEndianFile, Readers_ShortStreams_FailAndKeepTheDestination) {
  for (std::size_t length = 0; length < 4; ++length) {
    const std::string bytes = std::string("\xA1\xB2\xC3").substr(0, length);
    unsigned char one = 0x5A;
    unsigned short two = 0x5A5A;
    unsigned four = 0x5A5A5A5A;
    EXPECT_EQ(qz_be_read_int1(reading(bytes).get(), &one), length >= 1);
    EXPECT_EQ(one, length >= 1 ? 0xA1 : 0x5A);
    EXPECT_EQ(qz_be_read_int2(reading(bytes).get(), &two), length >= 2);
    EXPECT_EQ(two, length >= 2 ? 0xA1B2 : 0x5A5A);
    EXPECT_FALSE(qz_be_read_int4(reading(bytes).get(), &four));
    EXPECT_EQ(four, 0x5A5A5A5AU);
  }
}

TEST_F(BigEndianFile, ReadChunk_ShortStreams_FailAndMayLeaveAPrefix) {
  for (std::size_t length = 0; length < 6; ++length) {
    char buffer[8] = "#######";
    const File file = reading(std::string("abcdef").substr(0, length));
    EXPECT_FALSE(qz_read_data_chunk(file.get(), buffer, 6)) << length;
    EXPECT_STREQ(buffer + 6, "#") << "a byte past the run was written";
  }
}

TEST_F(BigEndianFile, ReadChunk_ExactAndLongerStreams_ReadJustTheRun) {
  char buffer[8] = "#######";
  const File exact = reading("abcdef");
  EXPECT_TRUE(qz_read_data_chunk(exact.get(), buffer, 6));
  EXPECT_STREQ(buffer, "abcdef#");
  const File longer = reading("uvwxyz!");
  EXPECT_TRUE(qz_read_data_chunk(longer.get(), buffer, 6));
  EXPECT_STREQ(buffer, "uvwxyz#");
  EXPECT_EQ(std::fgetc(longer.get()), '!');
}

TEST_F(BigEndianFile, Readers_EveryByteValueAtEveryPosition_AreUnsigned) {
  std::string bytes;
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (int position = 0; position < 4; ++position) bytes += bytes_of(byte << 8 * position, 4);
    bytes += bytes_of(byte << 8 | (255 - byte), 2) + bytes_of(byte, 1);
  }
  const File file = reading(bytes);
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned four = 1;
    unsigned short two = 1;
    unsigned char one = 1;
    for (int position = 0; position < 4; ++position) {
      EXPECT_TRUE(qz_be_read_int4(file.get(), &four));
      EXPECT_EQ(four, byte << 8 * position);
    }
    EXPECT_TRUE(qz_be_read_int2(file.get(), &two));
    EXPECT_EQ(two, byte << 8 | (255 - byte));
    EXPECT_TRUE(qz_be_read_int1(file.get(), &one));
    EXPECT_EQ(one, byte);
  }
}

TEST_F(BigEndianFile, Writers_ValueClasses_HighByteFirstAndArgumentUnchanged) {
  const unsigned values[] = {0,      1,      0x7F,      0x80,      0xFF,       0x100,      0x7FFF,     0x8000,
                             0xFFFF, 65536U, 0x123456U, 0xABCDEFU, 0x7FFFFFFF, 0x80000000, 0x01020304, 0xFFFFFFFF};
  for (const unsigned value : values) {
    File file = writing();
    auto one = static_cast<unsigned char>(value);
    auto two = static_cast<unsigned short>(value);
    unsigned four = value;
    EXPECT_TRUE(qz_be_write_int1(file.get(), &one));
    EXPECT_TRUE(qz_be_write_int2(file.get(), &two));
    EXPECT_TRUE(qz_be_write_int4(file.get(), &four));
    EXPECT_EQ(one, value & 0xFF);
    EXPECT_EQ(two, value & 0xFFFF);
    EXPECT_EQ(four, value);
    file.reset();
    EXPECT_EQ(written(), bytes_of(value & 0xFF, 1) + bytes_of(value & 0xFFFF, 2) + bytes_of(value, 4));
  }
}

TEST_F(BigEndianFile, RandomItems_ReadBackAsWritten) {
  SeededRandom random;
  File output = writing();
  std::vector<unsigned> values;
  for (int i = 0; i < 3000; ++i) {
    values.push_back(static_cast<unsigned>(random.between(0, 4294967295LL)));
    auto one = static_cast<unsigned char>(values.back());
    auto two = static_cast<unsigned short>(values.back());
    char chunk[3] = {'a', static_cast<char>(one), '\0'};
    ASSERT_TRUE(qz_be_write_int4(output.get(), &values.back()));
    ASSERT_TRUE(qz_be_write_int1(output.get(), &one));
    ASSERT_TRUE(qz_write_data_chunk(output.get(), chunk, 3));
    ASSERT_TRUE(qz_be_write_int2(output.get(), &two));
  }
  output.reset();
  const File input = reading(written());
  for (const unsigned value : values) {
    unsigned four = 0;
    unsigned short two = 0;
    unsigned char one = 0;
    char chunk[3] = {};
    ASSERT_TRUE(qz_be_read_int4(input.get(), &four));
    ASSERT_TRUE(qz_be_read_int1(input.get(), &one));
    ASSERT_TRUE(qz_read_data_chunk(input.get(), chunk, 3));
    ASSERT_TRUE(qz_be_read_int2(input.get(), &two));
    ASSERT_EQ(four, value);
    ASSERT_EQ(two, value & 0xFFFF);
    ASSERT_EQ(one, value & 0xFF);
    ASSERT_EQ(std::string(chunk, 3), std::string({'a', static_cast<char>(one), '\0'}));
  }
  EXPECT_EQ(std::fgetc(input.get()), EOF);
}

TEST_F(BigEndianFile, LargeChunk_TransfersWhole) {
  SeededRandom random;
  std::string bytes = random.text(300000);
  File file = writing();
  EXPECT_TRUE(qz_write_data_chunk(file.get(), bytes.data(), 300000));
  file.reset();
  EXPECT_TRUE(written() == bytes);
  std::string back(300000, '\0');
  EXPECT_TRUE(qz_read_data_chunk(reading(bytes).get(), back.data(), 300000));
  EXPECT_TRUE(back == bytes);
}

TEST_F(BigEndianFile, Readers_WriteOnlyStream_FailAndKeepTheDestination) {
  const File file = writing();
  unsigned char one = 1;
  unsigned short two = 2;
  unsigned four = 4;
  char chunk = 'c';
  EXPECT_FALSE(qz_be_read_int1(file.get(), &one));
  EXPECT_FALSE(qz_be_read_int2(file.get(), &two));
  EXPECT_FALSE(qz_be_read_int4(file.get(), &four));
  EXPECT_FALSE(qz_read_data_chunk(file.get(), &chunk, 1));
  EXPECT_EQ(one, 1);
  EXPECT_EQ(two, 2);
  EXPECT_EQ(four, 4U);
  EXPECT_EQ(chunk, 'c');
}

TEST_F(BigEndianFile, Writers_ReadOnlyStream_Fail) {
  const File file = reading("abcd");
  unsigned char one = 1;
  unsigned short two = 2;
  unsigned four = 4;
  char chunk = 'c';
  EXPECT_FALSE(qz_be_write_int1(file.get(), &one));
  EXPECT_FALSE(qz_be_write_int2(file.get(), &two));
  EXPECT_FALSE(qz_be_write_int4(file.get(), &four));
  EXPECT_FALSE(qz_write_data_chunk(file.get(), &chunk, 1));
  EXPECT_EQ(written(), "abcd");
}

TEST(BigEndianFullDevice, Writers_NoSpaceLeft_Fail) {
  const File file(std::fopen("/dev/full", "wb"), std::fclose);
  if (file == nullptr) GTEST_SKIP() << "no /dev/full";
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  unsigned char one = 1;
  unsigned short two = 2;
  unsigned four = 4;
  char chunk[3] = {};
  EXPECT_FALSE(qz_be_write_int1(file.get(), &one));
  EXPECT_FALSE(qz_be_write_int2(file.get(), &two));
  EXPECT_FALSE(qz_be_write_int4(file.get(), &four));
  EXPECT_FALSE(qz_write_data_chunk(file.get(), chunk, 3));
  EXPECT_TRUE(qz_write_data_chunk(file.get(), chunk, 0));
}

TEST_F(BigEndianFile, MiddleOfAFile_TransfersAtThePosition) {
  const File file = reading(std::string("xx\x00\x00\x00\x07yy", 8));
  ASSERT_EQ(std::fseek(file.get(), 2, SEEK_SET), 0);
  unsigned value = 0;
  EXPECT_TRUE(qz_be_read_int4(file.get(), &value));
  EXPECT_EQ(value, 7U);
  EXPECT_EQ(std::ftell(file.get()), 6);
  EXPECT_FALSE(qz_be_read_int4(file.get(), &value));
  EXPECT_EQ(value, 7U);
}

}  // namespace
