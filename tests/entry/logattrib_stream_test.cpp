#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include <unicode/unistr.h>

#include "entry/logattrib.h"
#include "tests/support/support.h"

namespace {

using qz_test::TempDir;
using qz_test::TimeZone;

class AttributeStream : public testing::Test {
 protected:
  void open(const char* mode) { file_.reset(std::fopen(folder_.path("out").c_str(), mode)); }
  void SetUp() override {
    open("w+b");
    ASSERT_NE(file_, nullptr);
  }
  std::FILE* file() { return file_.get(); }
  /// What has reached the file by now, whatever stdio still holds.
  std::string written() const { return folder_.read("out"); }
  void write(std::string_view bytes) const { folder_.write("out", bytes); }

  template <typename Value>
  void expect_written(const Value& value, const std::string& expected) {
    open("w+b");
    EXPECT_EQ(printf_attribute_value(file(), value), static_cast<ssize_t>(expected.size())) << expected;
    EXPECT_EQ(written(), expected);
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  TempDir folder_;
  std::unique_ptr<std::FILE, Close> file_;
};

TEST_F(AttributeStream, EveryValue_ReachesTheFileAtOnceAndItsLengthIsReturned) {
  expect_written("text", "text");
  expect_written(true, "1");
  expect_written(false, "0");
  expect_written(static_cast<unsigned char>(255), "255");
  expect_written(static_cast<char>(-5), "-5");
  expect_written(static_cast<char>(-128), "-128");
  expect_written(static_cast<unsigned short>(65535), "65535");
  expect_written(static_cast<short>(-32768), "-32768");
  expect_written(4294967295U, "4294967295");
  expect_written(-2147483647 - 1, "-2147483648");
  expect_written(0, "0");
  expect_written(qz_String("a string"), "a string");
  expect_written(_qz_LOG_ustring("\xE9t\xE9"), "\xE9t\xE9");
}

TEST_F(AttributeStream, EmptyTexts_WriteNothing) {
  expect_written("", "");
  expect_written(qz_String(), "");
  expect_written(_qz_LOG_ustring(), "");
  expect_written(_qz_LOG_ustring(nullptr), "");
}

TEST_F(AttributeStream, Times_InGmtWhateverTheirMode) {
  const TimeZone zone("America/New_York");
  qz_Time time = qz_Time::from_unix_seconds(1795248930);
  expect_written(time, "2026-11-21 08:15:30 GMT");
  time.GMT_to_local();
  expect_written(time, "2026-11-21 08:15:30 GMT");
  EXPECT_FALSE(time.is_GMT_time_mode());
}

TEST_F(AttributeStream, StringWithZeroBytes_WrittenInItsFullLength) {
  qz_String text;
  text._assign("ab\0cd\0", 6);
  expect_written(text, std::string("ab\0cd\0", 6));
}

TEST_F(AttributeStream, LongText_WrittenWhole) {
  const std::string text(50000, 'x');
  expect_written(qz_String(text.c_str()), text);
  expect_written(text.c_str(), text);
}

TEST_F(AttributeStream, UnicodeString_WritesNothing) {
  printf_attribute_value(file(), icu::UnicodeString("text"));
  std::fflush(file());
  EXPECT_EQ(written(), "");
}

TEST_F(AttributeStream, Double_StaysInTheBufferUntilFlushed) {
  printf_attribute_value(file(), 2.5);
  EXPECT_EQ(written(), "");
  std::fflush(file());
  EXPECT_EQ(written(), "2.500000");
}

TEST_F(AttributeStream, PendingBufferedText_ComesFirst) {
  std::fputs("pending,", file());
  EXPECT_EQ(written(), "");
  EXPECT_EQ(printf_attribute_value(file(), 7U), 1);
  EXPECT_EQ(written(), "pending,7");
}

TEST_F(AttributeStream, DoubleThenInteger_InOrder) {
  printf_attribute_value(file(), 2.5);
  printf_attribute_value(file(), ",");
  printf_attribute_value(file(), 7);
  EXPECT_EQ(written(), "2.500000,7");
}

TEST_F(AttributeStream, PositionInTheMiddle_AppendsAtTheEnd) {
  std::fputs("0123456789", file());
  ASSERT_EQ(std::fseek(file(), 3, SEEK_SET), 0);
  EXPECT_EQ(printf_attribute_value(file(), "end"), 3);
  EXPECT_EQ(written(), "0123456789end");
}

TEST_F(AttributeStream, AppendMode_AddsToTheFile) {
  write("old,");
  open("ab");
  EXPECT_EQ(printf_attribute_value(file(), 1), 1);
  EXPECT_EQ(printf_attribute_value(file(), ",2"), 2);
  EXPECT_EQ(written(), "old,1,2");
}

TEST_F(AttributeStream, ReadOnlyStream_GivesTheFailedWritesResult) {
  write("old");
  open("rb");
  EXPECT_EQ(printf_attribute_value(file(), 1), -1);
  EXPECT_EQ(printf_attribute_value(file(), qz_String("text")), -1);
  EXPECT_EQ(written(), "old");
}

TEST_F(AttributeStream, NullStream_WritesNothing) {
  std::FILE* const null = nullptr;
  EXPECT_EQ(printf_attribute_value(null, "text"), 0);
  EXPECT_EQ(printf_attribute_value(null, true), 0);
  EXPECT_EQ(printf_attribute_value(null, static_cast<unsigned char>(1)), 0);
  EXPECT_EQ(printf_attribute_value(null, static_cast<char>(1)), 0);
  EXPECT_EQ(printf_attribute_value(null, static_cast<unsigned short>(1)), 0);
  EXPECT_EQ(printf_attribute_value(null, static_cast<short>(1)), 0);
  EXPECT_EQ(printf_attribute_value(null, 1U), 0);
  EXPECT_EQ(printf_attribute_value(null, 1), 0);
  EXPECT_EQ(printf_attribute_value(null, 1.0), 0);
  EXPECT_EQ(printf_attribute_value(null, qz_String("text")), 0);
  EXPECT_EQ(printf_attribute_value(null, _qz_LOG_ustring("text")), 0);
  EXPECT_EQ(printf_attribute_value(null, qz_Time()), 0);
  EXPECT_EQ(printf_attribute_value(null, icu::UnicodeString("text")), 0);
}

TEST(AttributeStreamWithoutDescriptor, MemoryStream_MinusOneAndNothingWritten) {
  char memory[64] = "";
  std::FILE* stream = fmemopen(memory, sizeof(memory), "w");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(printf_attribute_value(stream, "text"), -1);
  EXPECT_EQ(printf_attribute_value(stream, 42), -1);
  std::fclose(stream);
  EXPECT_STREQ(memory, "");
}

TEST_F(AttributeStream, ClosedDescriptor_WritesNothing) {
  const int spare = dup(fileno(file()));
  ASSERT_EQ(close(fileno(file())), 0);
  EXPECT_EQ(printf_attribute_value(file(), "text"), 0);
  EXPECT_EQ(written(), "");
  ASSERT_EQ(dup2(spare, fileno(file())), fileno(file()));
  close(spare);
}

class AttributePipe : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(pipe(ends_), 0);
    stream_ = fdopen(ends_[1], "w");
    ASSERT_NE(stream_, nullptr);
  }
  /// Everything that came out of the pipe. The stream is closed then.
  std::string received() {
    std::fclose(stream_);
    std::string bytes;
    char buffer[256];
    for (ssize_t count; (count = read(ends_[0], buffer, sizeof(buffer))) > 0;) {
      bytes.append(buffer, static_cast<std::size_t>(count));
    }
    close(ends_[0]);
    return bytes;
  }
  int ends_[2] = {-1, -1};
  std::FILE* stream_ = nullptr;
};

TEST_F(AttributePipe, ValuesButDoubles_CannotBePositionedAndWriteNothing) {
  EXPECT_EQ(printf_attribute_value(stream_, "text"), 0);
  EXPECT_EQ(printf_attribute_value(stream_, 42), 0);
  EXPECT_EQ(printf_attribute_value(stream_, true), 0);
  EXPECT_EQ(printf_attribute_value(stream_, qz_String("text")), 0);
  EXPECT_EQ(printf_attribute_value(stream_, _qz_LOG_ustring("text")), 0);
  EXPECT_EQ(printf_attribute_value(stream_, qz_Time()), 0);
  EXPECT_EQ(received(), "");
}

// Callers rely on the difference.
TEST_F(AttributePipe, Doubles_ArriveThroughTheBuffer) {
  printf_attribute_value(stream_, 2.5);
  EXPECT_EQ(received(), "2.500000");
}

TEST(AttributeStreamFull, NoSpaceLeft_GivesTheFailedWritesResult) {
  std::FILE* stream = std::fopen("/dev/full", "w");
  if (stream == nullptr) GTEST_SKIP() << "no /dev/full";
  EXPECT_EQ(printf_attribute_value(stream, "text"), -1);
  std::fclose(stream);
}

}  // namespace
