#include "qzlog/debug_log.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <regex.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>

#include "tests/support/support.h"

namespace {

using qz_test::DebugLogFile;
using qz_test::Texts;
using qz_test::TimeZone;

namespace fs = std::filesystem;

std::string local_time_text(time_t moment) {
  tm local = {};
  localtime_r(&moment, &local);
  char text[32] = "";
  strftime(text, sizeof(text), "%Y/%m/%d %H:%M:%S", &local);
  return text;
}

bool matches(const std::string& text, const char* pattern) {
  regex_t compiled;
  if (regcomp(&compiled, pattern, REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool found = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return found;
}

TEST(DebugLogLevel, AtTheStart_Zero) {
  EXPECT_EQ(GetDebugLogLevel(), 0U);
  EXPECT_EQ(debug_log_level, 0U);
}

TEST(EnableDebugLog, ZeroToNine_SetTheLevel) {
  const DebugLogFile log(0);
  for (int level = 9; level >= 0; --level) {
    EnableDebugLog(level);
    EXPECT_EQ(GetDebugLogLevel(), static_cast<unsigned>(level));
    EXPECT_EQ(debug_log_level, static_cast<unsigned>(level));
  }
}

TEST(EnableDebugLog, TenOrMinusOne_LeaveTheLevel) {
  const DebugLogFile log(4);
  EnableDebugLog(10);
  EXPECT_EQ(GetDebugLogLevel(), 4U);
  EnableDebugLog(-1);
  EXPECT_EQ(GetDebugLogLevel(), 4U);
}

TEST(EnableDebugLog, FarOutside_LeavesTheLevel) {
  const DebugLogFile log(4);
  for (const int level : {11, 255, 256, 259, 65536, INT_MAX, INT_MIN, -9}) {
    EnableDebugLog(level);
    EXPECT_EQ(GetDebugLogLevel(), 4U) << level;
  }
}

TEST(EnableDebugLog, Zero_TurnsTheTraceOff) {
  const DebugLogFile log(9);
  EnableDebugLog(0);
  EXPECT_EQ(GetDebugLogLevel(), 0U);
  LogDebugMessage(1, "record\n");
  EXPECT_FALSE(log.exists());
}

TEST(LogDebugMessage, LevelZero_OnlyLevelNineIsWritten) {
  const DebugLogFile log(0);
  LogDebugMessage(1, "one\n");
  EXPECT_FALSE(log.exists());
  LogDebugMessage(9, "nine\n");
  EXPECT_EQ(log.records(), Texts({"nine\n"}));
}

TEST(LogDebugMessage, LevelTwo_OneAndTwoAreWrittenThreeIsNot) {
  const DebugLogFile log(2);
  LogDebugMessage(1, "one\n");
  LogDebugMessage(2, "two\n");
  LogDebugMessage(3, "three\n");
  EXPECT_EQ(log.records(), Texts({"one\n", "two\n"}));
}

TEST(LogDebugMessage, RecordOfLevelZero_WrittenUnlessTheTraceIsOff) {
  for (int level = 0; level <= 9; ++level) {
    const DebugLogFile log(level);
    LogDebugMessage(0, "zero\n");
    EXPECT_EQ(log.records(), level == 0 ? Texts() : Texts({"zero\n"})) << "level " << level;
  }
}

TEST(LogDebugMessage, EveryLevelPair_WrittenAsTheTestSays) {
  for (int current = 0; current <= 9; ++current) {
    const DebugLogFile log(current);
    for (const unsigned level : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 265U, 2147483648U, 4294967295U}) {
      LogDebugMessage(level, "record\n");
      const bool expected = (level <= static_cast<unsigned>(current) && current != 0) || level == 9;
      EXPECT_EQ(log.records(), expected ? Texts({"record\n"}) : Texts()) << level << " at " << current;
      log.clear();
    }
  }
}

TEST(LogDebugMessage, WholeFile_PrefixAndText) {
  const DebugLogFile log(2);
  LogDebugMessage(2, "%s:%d qz_LOG_LogConfig::SetDefinitionPath, path=%s!\n", "logcfg", 123, "/tmp/a.ldf");
  EXPECT_TRUE(matches(log.text(),
                      "^[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\(pid=[0-9]+\\)\\(tid=-?[0-9]+\\):"
                      "logcfg:123 qz_LOG_LogConfig::SetDefinitionPath, path=/tmp/a\\.ldf!\n$"))
      << log.text();
}

TEST(LogDebugMessage, Prefix_NamesLocalTimeProcessAndThread) {
  const TimeZone zone("Australia/Lord_Howe");
  const DebugLogFile log(1);
  const time_t before = time(nullptr);
  LogDebugMessage(1, "record\n");
  const time_t after = time(nullptr);
  const auto prefix = qz_test::parse_record_prefix(log.text(), 0);
  ASSERT_TRUE(prefix) << log.text();
  EXPECT_GE(prefix->time, local_time_text(before - 1));
  EXPECT_LE(prefix->time, local_time_text(after));
  EXPECT_EQ(prefix->pid, getpid());
  EXPECT_EQ(prefix->tid, static_cast<int>(pthread_self()));
}

TEST(LogDebugMessage, SeveralCalls_Append) {
  const DebugLogFile log(1);
  for (int i = 0; i < 50; ++i) {
    LogDebugMessage(1, "record %d\n", i);
    const Texts records = log.records();
    ASSERT_EQ(records.size(), static_cast<std::size_t>(i) + 1) << "not in the file after the call";
    EXPECT_EQ(records.back(), "record " + std::to_string(i) + "\n");
  }
}

TEST(LogDebugMessage, FileFromBefore_IsKept) {
  const DebugLogFile log(1);
  log.folder().write(DebugLogFile::kName, "earlier contents\n");
  LogDebugMessage(1, "record\n");
  const std::string text = log.text();
  EXPECT_EQ(text.substr(0, 17), "earlier contents\n");
  EXPECT_TRUE(text.ends_with("):record\n")) << text;
}

TEST(LogDebugMessage, FileRemovedInBetween_MadeAgain) {
  const DebugLogFile log(1);
  LogDebugMessage(1, "first\n");
  log.clear();
  LogDebugMessage(1, "second\n");
  EXPECT_EQ(log.records(), Texts({"second\n"}));
}

TEST(LogDebugMessage, WorkingDirectoryChanged_WritesThere) {
  const DebugLogFile first(1);
  LogDebugMessage(1, "first\n");
  {
    const DebugLogFile second(1);
    LogDebugMessage(1, "second\n");
    EXPECT_EQ(second.records(), Texts({"second\n"}));
  }
  LogDebugMessage(1, "third\n");
  EXPECT_EQ(first.records(), Texts({"first\n", "third\n"}));
}

TEST(LogDebugMessage, FormatWithoutLineBreak_RunsOnIntoTheNextRecord) {
  const DebugLogFile log(1);
  LogDebugMessage(1, "%s:%d _qz_LOG_log_entry_imp::remove_attrib, name==NULL", "logentry_i", 7);
  LogDebugMessage(1, "next\n");
  EXPECT_EQ(log.records(), Texts({"logentry_i:7 _qz_LOG_log_entry_imp::remove_attrib, name==NULL", "next\n"}));
  const std::string text = log.text();
  EXPECT_EQ(text.find('\n'), text.size() - 1) << "both records stand on one line";
}

TEST(LogDebugMessage, Conversions_AreThoseOfPrintf) {
  const DebugLogFile log(1);
  LogDebugMessage(1, "%%|%5d|%-5s|%05u|%x|%c|%.2f|%lld|%s\n", -42, "ab", 7U, 255U, 'c', 2.5, 123456789012LL, "");
  EXPECT_EQ(log.records(), Texts({"%|  -42|ab   |00007|ff|c|2.50|123456789012|\n"}));
}

TEST(LogDebugMessage, ArgumentsThatLookLikeFormats_WrittenAsTheyAre) {
  const DebugLogFile log(1);
  LogDebugMessage(1, "%s\n", "%s%n%d 100%");
  EXPECT_EQ(log.records(), Texts({"%s%n%d 100%\n"}));
}

TEST(LogDebugMessage, EmptyText_WritesThePrefixAlone) {
  const DebugLogFile log(1);
  LogDebugMessage(1, "%s", "");
  EXPECT_EQ(log.records(), Texts({""}));
  EXPECT_TRUE(log.text().ends_with("):"));
}

TEST(LogDebugMessage, LongTexts_WrittenWhole) {
  const DebugLogFile log(1);
  for (const std::size_t length : {100U, 4095U, 4096U, 4097U, 65536U, 1000000U}) {
    log.clear();
    const std::string text(length, 'x');
    LogDebugMessage(1, "%s\n", text.c_str());
    EXPECT_TRUE(log.records() == Texts({text + "\n"})) << length;
  }
}

TEST(LogDebugMessage, ProcessEndsWithoutCleaningUp_RecordIsInTheFile) {
  const DebugLogFile log(1);
  const pid_t child = fork();
  if (child == 0) {
    LogDebugMessage(1, "last words\n");
    _exit(0);
  }
  ASSERT_GT(child, 0);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  const auto prefix = qz_test::parse_record_prefix(log.text(), 0);
  ASSERT_TRUE(prefix) << log.text();
  EXPECT_EQ(prefix->pid, child);
  EXPECT_EQ(log.text().substr(prefix->end), "last words\n");
}

/// The rights of an ordinary user while it lives: for root every directory is writable.
class OrdinaryUser {
 public:
  OrdinaryUser() : previous_(geteuid()) {
    if (previous_ == 0 && seteuid(65534) != 0) ADD_FAILURE() << "cannot give up root's rights";
  }
  ~OrdinaryUser() {
    if (previous_ == 0 && seteuid(previous_) != 0) ADD_FAILURE() << "cannot take back root's rights";
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  uid_t previous_;
};

TEST(LogDebugMessage, WorkingDirectoryNotWritable_ReturnsAndWritesNothing) {
  const DebugLogFile log(9);
  fs::permissions(log.folder().path(), fs::perms(0555));
  {
    const OrdinaryUser user;
    LogDebugMessage(1, "lost\n");
    LogDebugMessage(9, "lost\n");
  }
  EXPECT_TRUE(fs::is_empty(log.folder().path()));
  fs::permissions(log.folder().path(), fs::perms(0755));
  LogDebugMessage(1, "kept\n");
  EXPECT_EQ(log.records(), Texts({"kept\n"}));
}

TEST(LogDebugMessage, WorkingDirectoryRemoved_ReturnsNormally) {
  const DebugLogFile log(9);
  fs::remove(log.folder().path());
  LogDebugMessage(9, "lost %d\n", 1);
  EXPECT_FALSE(fs::exists(log.folder().path()));
}

TEST(LogDebugMessage, FolderInTheFilesPlace_ReturnsAndLeavesIt) {
  const DebugLogFile log(9);
  fs::create_directory(log.folder().path(DebugLogFile::kName));
  LogDebugMessage(9, "lost\n");
  EXPECT_TRUE(fs::is_empty(log.folder().path(DebugLogFile::kName)));
}

TEST(LogDebugMessage, NoSpaceLeft_ReturnsNormally) {
  const DebugLogFile log(9);
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  fs::create_symlink("/dev/full", log.folder().path(DebugLogFile::kName));
  const std::string text(100000, 'x');
  LogDebugMessage(9, "%s\n", text.c_str());
  EXPECT_TRUE(fs::is_symlink(log.folder().path(DebugLogFile::kName)));
}

TEST(LogDebugMessage, NothingWanted_NoFileIsOpened) {
  const DebugLogFile log(2);
  for (int i = 0; i < 1000; ++i) LogDebugMessage(3, "%s\n", "trace");
  EXPECT_TRUE(fs::is_empty(log.folder().path()));
}

TEST(LogDebugMessage, ManyRecords_NoFileStaysOpen) {
  const DebugLogFile log(1);
  for (int i = 0; i < 2000; ++i) LogDebugMessage(1, "record\n");
  const auto open_files = std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  EXPECT_LT(open_files, 100);
  EXPECT_EQ(log.records().size(), 2000U);
}

TEST(GetZrkVersion, AlwaysTheSameStaticText) {
  EXPECT_STREQ(GetZRKVersion(), "1.1.1.0000");
  EXPECT_EQ(GetZRKVersion(), GetZRKVersion());
}

}  // namespace
