#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>
#include <iterator>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"

namespace {

using namespace qz_test;

class OpenCounter : public CounterTest {
 protected:
  void expect_every_operation(int result) {
    _qz_LOG_EntryCounterElement element = {32, 2020, 1, 1, 7, 1, {0, 0}};
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), result);
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), result);
    EXPECT_EQ(counter_.IncreaseCount(2021, 2, 2, 8), result);
    EXPECT_EQ(counter_.IncreaseCount(2021, 2, 2, -1), result);
    EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 5), result);
    EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), result);
    EXPECT_EQ(counter_.DeleteEntryElement(moment(1980, 1, 1), moment(2030, 12, 31)), result);
    EXPECT_EQ(counter_.addElement(&element), result);
  }

  static std::size_t open_descriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
  }
};

TEST_F(OpenCounter, NotOpened_OperationsReturnZero) {
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
  expect_every_operation(0);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2021, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_EQ(counter_.addElement(nullptr), 0);
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  expect_every_operation(0);
}

TEST_F(OpenCounter, MissingFile_CreatedEmpty) {
  open();
  EXPECT_TRUE(folder_.has("days.cnt"));
  EXPECT_EQ(read(), "");
  EXPECT_NE(counter_.GetFilePointer(), nullptr);
}

TEST_F(OpenCounter, ExistingFile_KeptAsItIs) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3) + "piece";
  open_with(bytes);
  EXPECT_TRUE(holds(bytes));
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  EXPECT_TRUE(holds(bytes));
}

TEST_F(OpenCounter, SlashesAtTheEndOfTheDirectory_Dropped) {
  for (const char* slashes : {"", "/", "///"}) {
    _qz_LOG_EntryCounter counter;
    EXPECT_EQ(counter.OpenEntryCounterFile((folder_.path() + slashes).c_str(), "days"), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 7), 0);
  }
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 3)));
}

TEST_F(OpenCounter, DirectoryOfNothingButSlashes_IsTheRoot) {
  const std::string name = folder_.path("days").substr(1);
  for (const char* directory : {"", "/", "////"}) {
    _qz_LOG_EntryCounter counter;
    EXPECT_EQ(counter.OpenEntryCounterFile(directory, name.c_str()), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 7), 0);
  }
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 3)));
}

TEST_F(OpenCounter, RelativeDirectory_InTheWorkingDirectory) {
  const DebugLogFile log(0);
  EXPECT_EQ(counter_.OpenEntryCounterFile(".", "days"), 0);
  EXPECT_TRUE(log.folder().has("days.cnt"));
}

TEST_F(OpenCounter, EmptyName_FileIsTheSuffix) {
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), ""), 0);
  EXPECT_TRUE(folder_.has(".cnt"));
}

TEST_F(OpenCounter, VeryLongArguments_NotOpened) {
  const std::string name(5000, 'n');
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), name.c_str()), 0);
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
  expect_every_operation(0);
}

TEST_F(OpenCounter, DirectoryMissing_NotOpenedAndNothingThrown) {
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path("missing").c_str(), "days"), 0);
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
  expect_every_operation(0);
}

TEST_F(OpenCounter, NullArguments_NotOpened) {
  EXPECT_EQ(counter_.OpenEntryCounterFile(nullptr, "days"), 0);
  expect_every_operation(0);
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), nullptr), 0);
  expect_every_operation(0);
  EXPECT_EQ(counter_.OpenEntryCounterFile(nullptr, nullptr), 0);
  expect_every_operation(0);
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
}

TEST_F(OpenCounter, FailedOpenAfterAWritableOne_OperationsReturnZero) {
  for (const char* directory : {static_cast<const char*>(nullptr), "/missing/folder"}) {
    open();
    EXPECT_EQ(counter_.OpenEntryCounterFile(directory, "days"), 0);
    EXPECT_EQ(counter_.GetFilePointer(), nullptr);
    expect_every_operation(0);
  }
  EXPECT_EQ(read(), "");
}

TEST_F(OpenCounter, ReadOnlyFile_OperationsReturnZeroAndChangeNothing) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3) + free_record();
  write(bytes);
  {
    const ReadOnlyFile read_only(path());
    if (!read_only.holds()) GTEST_SKIP() << "this user may write any file";
    open();
  }
  EXPECT_NE(counter_.GetFilePointer(), nullptr);
  expect_every_operation(0);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2021, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(holds(bytes));
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  expect_every_operation(0);
}

TEST_F(OpenCounter, ReadOnlyAfterWritable_NothingIsWrittenAnyMore) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  {
    const ReadOnlyFile read_only(path());
    if (!read_only.holds()) GTEST_SKIP() << "this user may write any file";
    open();
  }
  expect_every_operation(0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1)));
}

/// A socket exists and can be opened for nothing, whoever asks.
class UnreadableCounter : public OpenCounter {
 protected:
  UnreadableCounter() : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path().copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  }
  ~UnreadableCounter() override { close(socket_); }

  void expect_open_throws() {
    EXPECT_EQ(thrown_by([&] { counter_.OpenEntryCounterFile(folder_.path().c_str(), "days"); }),
              thrown<QZX_logging_file_operation_failed>("Cannot open file with read mode!\n"));
  }

 private:
  int socket_;
};

TEST_F(UnreadableCounter, Open_Throws) {
  expect_open_throws();
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
  expect_every_operation(0);
}

TEST_F(UnreadableCounter, Open_WritesADebugRecordOfLevelOne) {
  {
    const DebugLogFile log(1);
    expect_open_throws();
    EXPECT_EQ(log.unnumbered_records(),
              Texts({"logentrycounter:# Error: Cannot open file " + path() + " with read mode!\n"}));
  }
  const DebugLogFile log(0);
  expect_open_throws();
  EXPECT_FALSE(log.exists());
}

TEST_F(UnreadableCounter, OpenAfterAWritableOne_ThrowsAndNothingIsWritten) {
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
  expect_open_throws();
  expect_every_operation(0);
  EXPECT_EQ(folder_.read("other.cnt"), "");
}

TEST_F(OpenCounter, Closed_OperationsReturnMinusOne) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  EXPECT_EQ(counter_.GetFilePointer(), nullptr);
  expect_every_operation(-1);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1)));
}

TEST_F(OpenCounter, ClosedTwice_BothReturnZero) {
  open();
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  expect_every_operation(-1);
}

TEST_F(OpenCounter, OpenedAgainAfterClose_GoesOn) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  counter_.CloseEntryCounterFile();
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 2) + record_bytes(2020, 1, 1, 8, 1)));
}

TEST_F(OpenCounter, OpenedAgainWithoutClose_EarlierStreamStaysOpen) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  FILE* const earlier = counter_.GetFilePointer();
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
  EXPECT_NE(counter_.GetFilePointer(), earlier);
  EXPECT_EQ(fseek(earlier, 3, SEEK_SET), 0);
  EXPECT_EQ(fgetc(earlier), 32);
  EXPECT_EQ(counter_.IncreaseCount(2021, 1, 1, 9), 0);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1)));
  EXPECT_EQ(folder_.read("other.cnt"), record_bytes(2021, 1, 1, 9, 1));
}

TEST_F(OpenCounter, AnotherFileWithTheLastRecord_FastPathCountsThere) {
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  folder_.write("other.cnt", record_bytes(2020, 1, 1, 7, 50));
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
  EXPECT_EQ(counter_.IncreaseCount(2021, 5, 5, 7), 0);
  EXPECT_EQ(folder_.read("other.cnt"), record_bytes(2020, 1, 1, 7, 51));
}

TEST_F(OpenCounter, Destruction_ClosesEveryStream) {
  const std::size_t before = open_descriptors();
  {
    _qz_LOG_EntryCounter counter;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
    EXPECT_EQ(open_descriptors(), before + 5);
  }
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(OpenCounter, OutOfMemory_ThrowsAndLeaksNoDescriptor) {
  const std::string name(200, 'n');
  const std::size_t before = open_descriptors();
  EXPECT_GT(FailEveryAllocation([&] {
              _qz_LOG_EntryCounter counter;
              counter.OpenEntryCounterFile(folder_.path().c_str(), name.c_str());
              counter.OpenEntryCounterFile(folder_.path().c_str(), name.c_str());
            }),
            0U);
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(OpenCounter, Directory_OpenedForReadingOnly) {
  std::filesystem::create_directory(path());
  open();
  expect_every_operation(0);
}

}  // namespace
