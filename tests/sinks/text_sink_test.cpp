#include "qzlog/text_sink.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "tests/sinks/sinks_fixture.h"
#include "tests/support/child_process.h"

namespace {

using namespace qz_test;

qz_LOG_TextSinkSettings with_format(const char* format) {
  qz_LOG_TextSinkSettings settings;
  settings.format = format;
  return settings;
}

class TextSink : public SinksTest {};

TEST_F(TextSink, Descriptor_GetsALineForEachEntry) {
  StoppedClock clock(kMoment);
  const Pipe pipe;
  qz_LOG_TextSink sink(pipe.writer(), false, with_format("{time} {level} {id} {name} {message}"));
  qz_LOG_LogEntry entry = make_entry();
  EXPECT_TRUE(sink.Write(entry));
  entry.SetTimestamp(qz_Time::from_unix_seconds(kMoment - 3600), true);
  EXPECT_TRUE(sink.Write(entry));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(pipe.read_all(), "2026-11-21T08:15:30Z 3 1001 - Disk vol1\n2026-11-21T07:15:30Z 3 1001 - Disk vol1\n");
  EXPECT_EQ(counts_of(sink), "2/0/0");
  EXPECT_EQ(sink.GetCounts().bytes, 80U);
}

TEST_F(TextSink, File_GetsTheSameLines) {
  qz_LOG_FileSinkSettings file;
  file.path = folder_.path("messages.txt");
  {
    qz_LOG_TextSink sink(file, with_format("{message}"));
    EXPECT_TRUE(write_to(sink));
    EXPECT_TRUE(write_to(sink, kDisk, 3, "vol2"));
  }
  EXPECT_EQ(folder_.read("messages.txt"), "Disk vol1\nDisk vol2\n");
}

TEST_F(TextSink, EachWayOfKeeping_KeepsTheLines) {
  for (const auto way :
       {qz_LOG_FileSinkSettings::kWrite, qz_LOG_FileSinkSettings::kShared, qz_LOG_FileSinkSettings::kBuffered}) {
    qz_LOG_FileSinkSettings file;
    const std::string name = "messages" + std::to_string(way);
    file.path = folder_.path(name);
    file.way = way;
    file.longest_delay_milliseconds = 60000;
    qz_LOG_TextSink sink(file, with_format("{message}"));
    EXPECT_TRUE(write_to(sink));
    // Nothing waits where a killed process could lose it.
    const bool waits = way == qz_LOG_FileSinkSettings::kBuffered;
    EXPECT_EQ(folder_.read(name.c_str()), waits ? "" : "Disk vol1\n");
    EXPECT_TRUE(write_to(sink, kDisk, 3, "vol2"));
    EXPECT_TRUE(sink.Flush(10000));
    EXPECT_EQ(folder_.read(name.c_str()), "Disk vol1\nDisk vol2\n");
    EXPECT_EQ(sink.Close(10000), 0U);
    EXPECT_FALSE(write_to(sink));
    EXPECT_EQ(counts_of(sink), "2/1/0");
  }
}

TEST_F(TextSink, Series_IsRotatedBySize) {
  qz_LOG_FileSinkSettings file;
  file.folder = folder_.path("");
  file.prefix = "text";
  file.largest_file_bytes = 4096;
  std::string expected;
  {
    qz_LOG_TextSink sink(file, with_format("{message}"));
    for (int i = 0; i < 1000; ++i) {
      const std::string name = "vol" + std::to_string(i);
      EXPECT_TRUE(write_to(sink, kDisk, 3, name.c_str()));
      expected += "Disk " + name + '\n';
    }
  }
  std::vector<std::string> names;
  for (const auto& each : std::filesystem::directory_iterator(file.folder)) {
    const std::string name = each.path().filename();
    if (name.starts_with("text.")) names.push_back(each.path());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names.size(), 4U);
  std::string found;
  for (const std::string& name : names) {
    const std::string text = read_file(name);
    EXPECT_LE(text.size(), 4096U);
    found += text;
  }
  EXPECT_EQ(found, expected);
}

TEST_F(TextSink, ChildOfAFork_WritesToTheSameFile) {
  qz_LOG_FileSinkSettings file;
  file.path = folder_.path("messages.txt");
  for (const auto way : {qz_LOG_FileSinkSettings::kWrite, qz_LOG_FileSinkSettings::kBuffered}) {
    file.way = way;
    qz_LOG_TextSink sink(file, with_format("{message}"));
    EXPECT_TRUE(write_to(sink));
    EXPECT_EQ(ChildProcess([&] { return write_to(sink, kDisk, 3, "child") && sink.Flush(10000) ? 0 : 1; }).wait(), 0);
    EXPECT_EQ(sink.Close(10000), 0U);
    std::string text = folder_.read("messages.txt");
    for (const char* const line : {"Disk vol1\n", "Disk child\n"}) {
      const std::size_t at = text.find(line);
      ASSERT_NE(at, std::string::npos) << text;
      text.erase(at, std::strlen(line));
    }
    EXPECT_EQ(text, "");
    std::filesystem::remove(file.path);
  }
}

TEST_F(TextSink, BadSettings_NameThem) {
  const Pipe pipe;
  EXPECT_EQ(
      thrown_by([&] { qz_LOG_TextSink(pipe.writer(), false, with_format("{")); }),
      thrown<QZX_logging_illegal_argument>("format: '{' without '}' (write '{{' for the character) at character 1"));
  EXPECT_EQ(thrown_by([&] { qz_LOG_TextSink(-1, false); }),
            thrown<QZX_logging_illegal_argument>("descriptor: -1 is not open"));
  qz_LOG_FileSinkSettings file;
  EXPECT_EQ(thrown_by([&] { qz_LOG_TextSink sink(file); }),
            thrown<QZX_logging_illegal_argument>("path: one of path and prefix has to be given"));
  file.lost_event_id = 7;
  EXPECT_EQ(thrown_by([&] { qz_LOG_TextSink sink(file); }),
            thrown<QZX_logging_illegal_argument>("lost_event_id: lines of text tell of losses by texts of their own"));
}

/// What an entry's message looks like in a line.
std::string shown(unsigned id, const char* name) {
  const Pipe pipe;
  qz_LOG_TextSink sink(pipe.writer(), false, with_format("{message}"));
  EXPECT_TRUE(write_to(sink, id, 3, name));
  return pipe.read_all();
}

TEST_F(TextSink, ControlCharacters_CannotBeginALineOrCommandATerminal) {
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_EQ(shown(kTwoLines, "\xC3\xA4"), "a\\nb\\r\\x1B[2J\\x7F\t\xC3\xA4\n");
    EXPECT_EQ(shown(kDisk, "a\nb\x07"), "Disk a\\nb\\x07\n");
  }
}

TEST_F(TextSink, CodePageWithShifts_KeepsThem) {
  qz_LOG_LogConfig::SetCodePage("ISO-2022-JP");
  EXPECT_EQ(shown(kDisk, "\033$B$\"\033(B"), "Disk \033$B$\"\033(B\n");
}

TEST_F(TextSink, MessageThatCannotBeRendered_SaysSoAndIsCounted) {
  const Pipe pipe;
  qz_LOG_TextSink sink(pipe.writer(), false, with_format("{id} {message}"));
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(sink.GetRenderFailures(), 0U);
  EXPECT_TRUE(sink.Write(make_entry(), false, 5));
  const std::string text = pipe.read_all();
  const std::string reason = thrown_by([] { make_entry().FormatMessage(false, 5); });
  const std::string words = reason.substr(reason.find('"') + 1, reason.rfind('"') - reason.find('"') - 1);
  EXPECT_EQ(text, "1001 Disk vol1\n1001 (this message cannot be rendered: " + words + ")\n");
  EXPECT_EQ(sink.GetRenderFailures(), 1U);
  qz_LOG_LogConfig::SetCodePage("UTF-16");
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(sink.GetRenderFailures(), 2U);
  EXPECT_TRUE(pipe.read_all().starts_with("1001 (this message cannot be rendered: "));
  EXPECT_EQ(counts_of(sink), "3/0/0");
}

TEST_F(TextSink, EntryWithoutId_Fails) {
  const Pipe pipe;
  qz_LOG_TextSink sink(pipe.writer(), false);
  EXPECT_FALSE(sink.Write(qz_LOG_LogEntry()));
  EXPECT_EQ(counts_of(sink), "0/1/0");
}

TEST_F(TextSink, MakingItWithoutMemory_ThrowsThat) {
  const Pipe pipe;
  const qz_LOG_TextSinkSettings settings;
  EXPECT_GT(FailEveryAllocation([&] { const qz_LOG_TextSink sink(pipe.writer(), false, settings); }), 2U);
}

}  // namespace
