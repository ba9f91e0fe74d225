#include "qzlog/limited_sink.h"

#include <filesystem>

#include "qzlog/file_sink.h"
#include "qzlog/filtered_sink.h"
#include "qzlog/memory_sink.h"
#include "qzlog/split_sink.h"
#include "qzlog/stream_sink.h"
#include "qzlog/text_sink.h"
#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;

using Settings = qz_LOG_LimitedSinkSettings;

Settings limit(unsigned entries, unsigned held_event = 0) {
  Settings settings;
  settings.entries_per_second = entries;
  settings.held_event_id = held_event;
  return settings;
}

template <typename Sink, typename... Arguments>
std::unique_ptr<qz_LOG_Sink> make(Arguments&&... arguments) {
  return std::unique_ptr<qz_LOG_Sink>(new Sink(std::forward<Arguments>(arguments)...));
}

class LimitedSink : public SinksTest {
 protected:
  static std::string held_line(unsigned level, unsigned count) {
    return R"({"held":[{"id":1001,"level":)" + std::to_string(level) + R"(,"count":)" + std::to_string(count) +
           R"(,"since":"2026-11-21T08:15:30.250000000Z"}]})";
  }
  StoppedClock clock_{kMoment};
};

TEST_F(LimitedSink, OverTheLimit_IsHeldBackAndToldWithTheNextEntryOfALaterSecond) {
  qz_LOG_LimitedSink sink(make<qz_LOG_MemorySink>(), limit(2));
  auto& memory = dynamic_cast<qz_LOG_MemorySink&>(sink.GetSink());
  EXPECT_TRUE(write_to(sink));
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink, kDisk, 5));
  EXPECT_TRUE(write_to(sink, kOther));
  EXPECT_EQ(memory.GetLines().size(), 3U);
  clock_.set(kMoment + 1);
  EXPECT_TRUE(write_to(sink, kOther));
  const Texts lines = memory.GetLines();
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[3], held_line(5, 2));
  EXPECT_EQ(counts_of(sink), "4/0/2");
  EXPECT_EQ(sink.GetCounts().dropped_by_level[5], 1U);
  EXPECT_EQ(counts_of(memory), "4/0/0");
}

TEST_F(LimitedSink, StormOverManySeconds_IsToldEachSecond) {
  qz_LOG_LimitedSink sink(make<qz_LOG_MemorySink>(), limit(1));
  for (int second = 0; second < 5; ++second) {
    clock_.set(kMoment + second);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(write_to(sink), i == 0);
  }
  EXPECT_EQ(dynamic_cast<qz_LOG_MemorySink&>(sink.GetSink()).GetLines().size(), 5U + 4U);
  EXPECT_EQ(counts_of(sink), "5/0/45");
}

TEST_F(LimitedSink, ClockThatJumpsBack_BeginsAnotherSecond) {
  qz_LOG_LimitedSink sink(make<qz_LOG_MemorySink>(), limit(1));
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  clock_.set(kMoment - 3600);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(dynamic_cast<qz_LOG_MemorySink&>(sink.GetSink()).GetLines().at(1), held_line(3, 1));
}

TEST_F(LimitedSink, FlushCloseAndEnd_TellAtOnce) {
  const Pipe pipe;
  {
    qz_LOG_LimitedSink sink(make<qz_LOG_StreamSink>(pipe.writer(), false), limit(1));
    EXPECT_TRUE(write_to(sink));
    EXPECT_FALSE(write_to(sink));
    EXPECT_TRUE(sink.Flush(0));
    EXPECT_EQ(pipe.read_all(), line_of(3) + held_line(3, 1) + '\n');
    EXPECT_TRUE(sink.Flush(0));
    EXPECT_FALSE(write_to(sink));
    EXPECT_EQ(sink.Close(0), 0U);
    EXPECT_EQ(pipe.read_all(), held_line(3, 1) + '\n');
  }
  {
    qz_LOG_LimitedSink sink(make<qz_LOG_StreamSink>(pipe.writer(), false), limit(1));
    EXPECT_TRUE(write_to(sink));
    EXPECT_FALSE(write_to(sink));
    pipe.read_all();
  }
  EXPECT_EQ(pipe.read_all(), held_line(3, 1) + '\n');
}

TEST_F(LimitedSink, Text_IsToldByAText) {
  const Pipe pipe;
  qz_LOG_TextSinkSettings text;
  text.format = "{level} {message}";
  qz_LOG_LimitedSink sink(make<qz_LOG_TextSink>(pipe.writer(), false, text), limit(1));
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(pipe.read_all(),
            "3 Disk vol1\n3 1 entries of event 1001, level 3, were held back since 2026-11-21T08:15:30Z\n");
}

TEST_F(LimitedSink, FilesAreTold_InLinesWithNumbers) {
  for (const auto way :
       {qz_LOG_FileSinkSettings::kWrite, qz_LOG_FileSinkSettings::kShared, qz_LOG_FileSinkSettings::kBuffered}) {
    qz_LOG_FileSinkSettings file;
    file.path = folder_.path("held.jsonl");
    file.way = way;
    {
      qz_LOG_LimitedSink sink(make<qz_LOG_FileSink>(file), limit(1));
      EXPECT_TRUE(write_to(sink));
      EXPECT_FALSE(write_to(sink));
    }
    const std::string text = folder_.read("held.jsonl");
    const std::size_t second = text.find('\n') + 1;
    EXPECT_NE(text.find("\"seq\":2,", second), std::string::npos) << text;
    EXPECT_NE(text.find(held_line(3, 1).substr(1), second), std::string::npos) << text;
    std::filesystem::remove(file.path);
  }
}

TEST_F(LimitedSink, NamedEvent_TellsByEntries) {
  qz_LOG_LimitedSink sink(make<ScriptedSink>(), limit(1, kHeldEvent));
  auto& inner = dynamic_cast<ScriptedSink&>(sink.GetSink());
  for (const unsigned id : {kOther, kDisk}) {
    EXPECT_TRUE(write_to(sink, id, 3));
    EXPECT_FALSE(write_to(sink, id, 7));
    EXPECT_FALSE(write_to(sink, id, 5));
  }
  EXPECT_TRUE(sink.Flush(0));
  ASSERT_EQ(inner.entries.size(), 4U);
  const qz_LOG_LogEntry& told = inner.entries[2];
  EXPECT_EQ(told.GetEntryID(), kHeldEvent);
  EXPECT_EQ(told.GetLogLevel(), 7U);
  EXPECT_EQ(told.GetAttrib4u("HeldId"), kDisk);
  EXPECT_EQ(told.GetAttrib1u("HeldLevel"), 7U);
  EXPECT_EQ(told.GetAttrib4u("HeldCount"), 2U);
  EXPECT_EQ(told.GetAttribTime("HeldSince").unix_seconds(), kMoment);
  EXPECT_EQ(inner.entries[3].GetAttrib4u("HeldId"), kOther);
}

TEST_F(LimitedSink, TellingThatFails_IsTriedAgain) {
  qz_LOG_LimitedSink sink(make<ScriptedSink>(), limit(1, kHeldEvent));
  auto& inner = dynamic_cast<ScriptedSink&>(sink.GetSink());
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  inner.fail();
  EXPECT_FALSE(sink.Flush(0));
  inner.on_write = [](const qz_LOG_LogEntry&) { return ScriptedSink::Outcome(); };
  clock_.set(kMoment + 1);
  EXPECT_TRUE(write_to(sink, kOther));
  EXPECT_EQ(inner.entries.at(2).GetEntryID(), kHeldEvent);
  EXPECT_EQ(inner.entries.at(3).GetEntryID(), kOther);
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(inner.entries.size(), 4U);
}

TEST_F(LimitedSink, UnlimitedLevel_IsAlwaysHandedOn) {
  Settings settings = limit(1);
  settings.unlimited_level = 7;
  qz_LOG_LimitedSink sink(make<qz_LOG_MemorySink>(), settings);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(write_to(sink, kDisk, 7));
  EXPECT_TRUE(write_to(sink, kDisk, 6));
  EXPECT_FALSE(write_to(sink, kDisk, 6));
}

TEST_F(LimitedSink, SinksBehindOthers_AreTold) {
  const Pipe pipe;
  std::vector<std::unique_ptr<qz_LOG_Sink>> both;
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "", false, false};
  both.push_back(make<qz_LOG_FilteredSink>(make<qz_LOG_StreamSink>(pipe.writer(), false), filter));
  both.push_back(make<qz_LOG_MemorySink>());
  qz_LOG_LimitedSink sink(make<qz_LOG_SplitSink>(std::move(both)), limit(1));
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(pipe.read_all(), line_of(3) + held_line(3, 1) + '\n');
  auto& split = dynamic_cast<qz_LOG_SplitSink&>(sink.GetSink());
  EXPECT_EQ(dynamic_cast<qz_LOG_MemorySink&>(split.GetSink(1)).GetLines().at(1), held_line(3, 1));
}

TEST_F(LimitedSink, BadSettings_NameThem) {
  const auto thrown_with = [](std::unique_ptr<qz_LOG_Sink> sink, const Settings& settings) {
    return thrown_by([&] { qz_LOG_LimitedSink(std::move(sink), settings); });
  };
  EXPECT_EQ(thrown_with(nullptr, limit(1)), thrown<QZX_logging_illegal_argument>("sink: it is null"));
  EXPECT_EQ(thrown_with(make<qz_LOG_MemorySink>(), limit(0)),
            thrown<QZX_logging_illegal_argument>("entries_per_second: 0 is not from 1 to 1000000000"));
  Settings settings = limit(1);
  settings.unlimited_level = 11;
  EXPECT_EQ(thrown_with(make<qz_LOG_MemorySink>(), settings),
            thrown<QZX_logging_illegal_argument>("unlimited_level: 11 is not from 0 to 10"));
  EXPECT_EQ(thrown_with(make<ScriptedSink>(), limit(1)),
            thrown<QZX_logging_illegal_argument>("held_event_id: the inner sink can be told by an entry only"));
  for (const unsigned id : {kWrongEvent, 999U}) {
    EXPECT_EQ(thrown_with(make<qz_LOG_MemorySink>(), limit(1, id)),
              thrown<QZX_logging_illegal_argument>(
                  "held_event_id: the event " + std::to_string(id) +
                  " is not defined with HeldId (TypeUInt4), HeldLevel (TypeUInt1), HeldCount (TypeUInt4) and HeldSince "
                  "(TypeTimestamp)"));
  }
}

TEST_F(LimitedSink, WithoutMemory_TellsLater) {
  qz_LOG_LimitedSink sink(make<qz_LOG_MemorySink>(), limit(1));
  auto& memory = dynamic_cast<qz_LOG_MemorySink&>(sink.GetSink());
  unsigned held = 0;
  for (unsigned nth = 1; nth < 30; ++nth) {
    clock_.set(kMoment + nth);
    EXPECT_TRUE(write_to(sink));
    EXPECT_FALSE(write_to(sink));
    ++held;
    const AllocationFailure failure(nth);
    static_cast<void>(sink.Flush(0));
  }
  EXPECT_TRUE(sink.Flush(0));
  unsigned told = 0;
  for (const std::string& line : memory.GetLines()) {
    const std::size_t count = line.find("\"count\":");
    if (count != std::string::npos) told += static_cast<unsigned>(std::stoul(line.substr(count + 8)));
  }
  EXPECT_EQ(told, held);
}

}  // namespace
