#include "qzlog/journal_sink.h"

#include <fcntl.h>

#include <chrono>
#include <thread>

#include "qzlog/limited_sink.h"
#include "tests/sinks/journal_stand_in.h"
#include "tests/sinks/sinks_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/names_section.h"

namespace {

using namespace qz_test;

using Settings = qz_LOG_JournalSinkSettings;

constexpr unsigned kTypes = 2001;
constexpr unsigned kLarge = 2002;
constexpr unsigned kMarked = 2003;

LdfFile journal_definitions() {
  LdfFile file = sinks_definitions();
  file.entries.push_back({.id = kTypes,
                          .mask = 1,
                          .attributes = {{"Bool", TypeBool},
                                         {"SInt1", TypeSInt1},
                                         {"UInt4", TypeUInt4},
                                         {"Float", TypeFloat},
                                         {"Moment", TypeTimestamp},
                                         {"na-me \xC3\xA4", TypeUInt1}}});
  LdfEntry large{.id = kLarge, .mask = 1};
  for (int i = 0; i < 100; ++i) large.attributes.push_back({"Text" + std::to_string(i), TypeMBChar2K});
  file.entries.push_back(large);
  file.entries.push_back({.id = kMarked,
                          .mask = 1,
                          .message_text = "%s%User% %s%Password%",
                          .attributes = {{"User", TypeMBChar64}, {"Password", TypeMBChar64}}});
  return file;
}

class JournalSink : public SettingsTest {
 protected:
  JournalSink() : journal_(folder_.path("socket")) {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    const std::string bytes = with_names(
        journal_definitions().bytes(),
        {.events = {{kDisk, {"DISK_FULL", ""}}}, .marks = {{{1, kMarked, "Password"}, 2}, {{1, kMarked, "User"}, 1}}});
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", bytes).c_str());
    settings_.socket_path = journal_.path();
    settings_.product = "storage";
  }

  JournalStandIn journal_;
  Settings settings_;
};

/// Without what differs from writer to writer.
std::string without_head(const std::string& line) {
  const std::size_t body = std::min(line.find("\"id\":"), line.find("\"lost\":"));
  return body == std::string::npos ? line : line.substr(body);
}

std::string member(const std::string& line, const std::string& name) {
  const std::size_t begin = line.find('"' + name + "\":");
  if (begin == std::string::npos) return "(none)";
  const std::size_t value = begin + name.size() + 3;
  return line.substr(value, line.find_first_of(",}", value) - value);
}

TEST_F(JournalSink, Entry_IsAMessageWithTheseBytes) {
  StoppedClock clock(kMoment);
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink, kDisk, 7));
  const JournalMessage message = journal_.receive();
  EXPECT_FALSE(message.was_file);
  const std::string line = message.field("QZLOG_ENTRY");
  EXPECT_EQ(message.bytes, "QZLOG_ENTRY=" + line +
                               "\n"
                               "MESSAGE=Disk vol1\n"
                               "PRIORITY=3\n"
                               "MESSAGE_ID=46ee974fa546c9c87e48e44566b63df1\n"
                               "QZLOG_ID=1001\n"
                               "QZLOG_NAME=DISK_FULL\n"
                               "QZLOG_LEVEL=7\n"
                               "QZ_NAME=vol1\n");
  EXPECT_EQ(without_head(line), R"("id":1001,"level":7,"name":"DISK_FULL","attributes":{"Name":"vol1"}})");
  EXPECT_EQ(member(line, "seq"), "1");
  EXPECT_EQ(line.substr(line.find("\"written\"")).substr(0, 43), R"("written":"2026-11-21T08:15:30.250000000Z",)");
  EXPECT_TRUE(line.starts_with("{\"writer\":\"")) << line;
  EXPECT_NE(line.find('/' + std::to_string(getpid()) + '/'), std::string::npos) << line;
  EXPECT_NE(line.find("\"definitions\":\""), std::string::npos) << line;
  EXPECT_EQ(counts_of(sink), "1/0/0");
  EXPECT_EQ(sink.GetCounts().bytes, message.bytes.size());
}

TEST_F(JournalSink, Levels_ArePriorities) {
  qz_LOG_JournalSink sink(settings_);
  std::string priorities;
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_TRUE(write_to(sink, kDisk, level));
    priorities += journal_.receive().field("PRIORITY");
  }
  EXPECT_EQ(priorities, "7766544321");
}

TEST_F(JournalSink, Values_AreAsInLines) {
  qz_LOG_JournalSink sink(settings_);
  qz_LOG_LogEntry entry(kTypes, 3);
  entry.AddAttribBool("Bool", true);
  entry.AddAttrib1("SInt1", -128);
  entry.AddAttrib4u("UInt4", 4294967295U);
  entry.AddAttribFloat8("Float", -HUGE_VAL);
  entry.AddAttribTime("Moment", qz_Time::from_unix_seconds(kMoment));
  entry.AddAttrib1u("na-me \xC3\xA4", 7);
  EXPECT_TRUE(sink.Write(entry));
  const JournalMessage message = journal_.receive();
  EXPECT_EQ(message.field("QZ_BOOL"), "true");
  EXPECT_EQ(message.field("QZ_SINT1"), "-128");
  EXPECT_EQ(message.field("QZ_UINT4"), "4294967295");
  EXPECT_EQ(message.field("QZ_FLOAT"), "-Infinity");
  EXPECT_EQ(message.field("QZ_MOMENT"), "2026-11-21T08:15:30Z");
  EXPECT_EQ(message.field("QZ_NA_ME___"), "7");
  EXPECT_EQ(message.field("QZLOG_NAME"), "(none)");
}

/// In UTF-8, whatever entries are in, and never with a field of their own making.
TEST_F(JournalSink, HostileTexts_StayInTheirFields) {
  const std::string invalid = "a\xFF\xC3";
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink, kDisk, 3, invalid.c_str()));
  JournalMessage message = journal_.receive();
  EXPECT_EQ(message.field("QZ_NAME"), "a\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(message.field("MESSAGE"), "Disk a\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_TRUE(write_to(sink, kDisk, 3, ""));
  EXPECT_EQ(journal_.receive().field("QZ_NAME"), "");
  EXPECT_TRUE(write_to(sink, kDisk, 3, "x\nPRIORITY=0\n\x1B[2J"));
  message = journal_.receive();
  EXPECT_EQ(message.field("PRIORITY"), "6");
  EXPECT_EQ(message.field("QZ_NAME"), "x\\nPRIORITY=0\\n\x1B[2J");
  EXPECT_EQ(message.field("MESSAGE"), "Disk x\\nPRIORITY=0\\n\\x1B[2J");
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_TRUE(write_to(sink, kDisk, 3, "\xE4"));
  message = journal_.receive();
  EXPECT_EQ(message.field("QZ_NAME"), "\xC3\xA4");
  EXPECT_EQ(message.field("MESSAGE"), "Disk \xC3\xA4");
}

/// In EBCDIC it is no line feed where texts are escaped, and becomes one in UTF-8.
TEST_F(JournalSink, LineFeedInAValue_IsSentWithItsLength) {
  qz_LOG_LogConfig::SetCodePage("ibm-37");
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink, kDisk, 3, "\x81\x25\x82"));
  const JournalMessage message = journal_.receive();
  EXPECT_EQ(message.field("QZ_NAME"), "a\nb");
  EXPECT_EQ(message.field("QZLOG_NAME"), "DISK_FULL");
  EXPECT_NE(message.bytes.find(std::string("QZ_NAME\n\x03\0\0\0\0\0\0\0a\nb\n", 20)), std::string::npos);
}

TEST_F(JournalSink, SensitiveAttributes_AreInNoField) {
  qz_LOG_JournalSink sink(settings_);
  qz_LOG_LogEntry entry(kMarked, 3);
  entry.AddAttribMBStr("User", "ana");
  entry.AddAttribMBStr("Password", "secret");
  EXPECT_TRUE(sink.Write(entry));
  const JournalMessage message = journal_.receive();
  EXPECT_EQ(message.bytes.find("ana"), std::string::npos) << message.bytes;
  EXPECT_EQ(message.bytes.find("secret"), std::string::npos) << message.bytes;
  EXPECT_EQ(message.field("QZ_USER"), "sha256:24d4b96f58da6d4a");
  EXPECT_EQ(message.field("QZ_PASSWORD"), "(none)");
}

TEST_F(JournalSink, ProductThatIsNotNamed_HasNoMessageId) {
  settings_.product = "";
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(journal_.receive().field("MESSAGE_ID"), "(none)");
}

/// IDs that meet in the places where they are kept, and two sinks in one thread.
TEST_F(JournalSink, MessageIds_AreThoseOfProductAndEvent) {
  qz_LOG_JournalSink storage(settings_);
  settings_.product = "shop";
  qz_LOG_JournalSink shop(settings_);
  std::map<std::string, unsigned> found;
  for (int round = 0; round < 2; ++round) {
    for (qz_LOG_JournalSink* sink : {&storage, &shop}) {
      for (const unsigned id : {kDisk, kOther, kDisk}) {
        EXPECT_TRUE(write_to(*sink, id));
        ++found[journal_.receive().field("MESSAGE_ID")];
      }
    }
  }
  EXPECT_EQ(found.size(), 4U);
  EXPECT_EQ(found["46ee974fa546c9c87e48e44566b63df1"], 4U);
}

TEST_F(JournalSink, MessageThatCannotBeRendered_SaysSoAndIsCounted) {
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(sink.Write(make_entry(), false, 99));
  EXPECT_TRUE(journal_.receive().field("MESSAGE").starts_with("(this message cannot be rendered: "));
  EXPECT_EQ(sink.GetRenderFailures(), 1U);
  EXPECT_EQ(counts_of(sink), "1/0/0");
}

/// What is not in the code page of entries stays as it is.
TEST_F(JournalSink, TextsOfOurOwn_AreReadableInEveryCodePage) {
  qz_LOG_LogConfig::SetCodePage("ibm-37");
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(sink.Write(make_entry(), false, 99));
  EXPECT_TRUE(journal_.receive().field("MESSAGE").starts_with("(this message cannot be rendered: "));
  journal_.stop();
  EXPECT_FALSE(write_to(sink));
  journal_.start();
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_TRUE(journal_.receive().field("MESSAGE").starts_with("1 entries of event 1001, level 3, were lost since "));
}

TEST_F(JournalSink, EntriesThatWereHeldBack_AreToldInAMessage) {
  qz_LOG_LimitedSinkSettings limits;
  limits.entries_per_second = 1;
  StoppedClock clock(kMoment);
  qz_LOG_LimitedSink sink(std::unique_ptr<qz_LOG_Sink>(new qz_LOG_JournalSink(settings_)), limits);
  EXPECT_TRUE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  clock.set(kMoment + 2);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(journal_.receive().field("QZ_NAME"), "vol1");
  const JournalMessage told = journal_.receive();
  EXPECT_EQ(told.field("MESSAGE"), "1 entries of event 1001, level 3, were held back since 2026-11-21T08:15:30Z");
  EXPECT_NE(told.field("QZLOG_ENTRY").find("\"held\":[{\"id\":1001,"), std::string::npos);
}

TEST_F(JournalSink, LargeEntry_GoesAsASealedFile) {
  qz_LOG_JournalSink sink(settings_);
  qz_LOG_LogEntry entry(kLarge, 3);
  const std::string text(2000, 'x');
  for (int i = 0; i < 100; ++i) entry.AddAttribMBStr(("Text" + std::to_string(i)).c_str(), text.c_str());
  EXPECT_TRUE(sink.Write(entry));
  EXPECT_TRUE(write_to(sink));
  const JournalMessage message = journal_.receive();
  EXPECT_TRUE(message.was_file);
  EXPECT_EQ(message.seals, F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
  EXPECT_GT(message.bytes.size(), 400'000U);
  EXPECT_EQ(message.field("QZ_TEXT99"), text);
  EXPECT_EQ('{' + without_head(message.field("QZLOG_ENTRY")), entry.ToJson());
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), "2");
}

TEST_F(JournalSink, JournalThatIsRestarted_IsFoundAgainAndToldOfTheLosses) {
  StoppedClock clock(kMoment);
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), "1");
  journal_.stop();
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink));
  EXPECT_FALSE(write_to(sink, kOther, 8));
  journal_.start();
  EXPECT_TRUE(write_to(sink));
  const JournalMessage told = journal_.receive();
  EXPECT_EQ(told.field("QZLOG_ENTRY").substr(0, 1), "{");
  EXPECT_EQ(without_head(told.field("QZLOG_ENTRY")),
            R"("lost":[{"id":1001,"level":3,"count":2,"since":"2026-11-21T08:15:30.250000000Z"},)"
            R"({"id":1002,"level":8,"count":1,"since":"2026-11-21T08:15:30.250000000Z"}]})");
  EXPECT_EQ(told.field("MESSAGE"),
            "2 entries of event 1001, level 3, were lost since 2026-11-21T08:15:30Z; "
            "1 entries of event 1002, level 8, were lost since 2026-11-21T08:15:30Z");
  EXPECT_EQ(told.field("PRIORITY"), "2");
  EXPECT_EQ(member(told.field("QZLOG_ENTRY"), "seq"), "2");
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), "3");
  EXPECT_EQ(counts_of(sink), "2/3/0");
}

/// As a service whose socket its manager keeps: the name means another socket, and the old one is gone.
TEST_F(JournalSink, JournalThatIsRestartedBetweenEntries_LosesNone) {
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink));
  journal_.stop();
  journal_.start();
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), "2");
}

TEST_F(JournalSink, JournalThatDoesNotRead_IsWaitedForOnceAndThenNoMore) {
  settings_.longest_wait_milliseconds = 50;
  qz_LOG_JournalSink sink(settings_);
  unsigned taken = 0;
  while (write_to(sink)) ++taken;
  EXPECT_GT(taken, 5U);
  const long long begin = qzlog::SinkClock::steady_milliseconds();
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(write_to(sink));
  EXPECT_LT(qzlog::SinkClock::steady_milliseconds() - begin, 2000);
  EXPECT_EQ(journal_.receive_all().size(), taken);
  EXPECT_TRUE(write_to(sink));
  EXPECT_NE(journal_.receive().field("QZLOG_ENTRY").find("\"count\":101,"), std::string::npos);
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), std::to_string(taken + 2));
  EXPECT_EQ(counts_of(sink), std::to_string(taken + 1) + "/101/0");
}

TEST_F(JournalSink, JournalThatReadsLate_IsWaitedFor) {
  settings_.longest_wait_milliseconds = 30'000;
  qz_LOG_JournalSink sink(settings_);
  constexpr unsigned kEntries = 2000;
  unsigned seen = 0;
  bool is_in_order = true;
  std::thread reader([&] {
    while (seen < kEntries) {
      if (seen % 500 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
      const JournalMessage message = journal_.receive();
      if (message.bytes.empty()) return;
      is_in_order = is_in_order && member(message.field("QZLOG_ENTRY"), "seq") == std::to_string(++seen);
    }
  });
  for (unsigned i = 0; i < kEntries; ++i) EXPECT_TRUE(write_to(sink));
  reader.join();
  EXPECT_EQ(seen, kEntries);
  EXPECT_TRUE(is_in_order);
}

TEST_F(JournalSink, SeveralThreads_NumberTheirEntriesWithoutGaps) {
  qz_LOG_JournalSink sink(settings_);
  constexpr unsigned kThreads = 4;
  constexpr unsigned kEntries = 500;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (unsigned entry = 0; entry < kEntries; ++entry) write_to(sink);
    });
  }
  unsigned seen = 0;
  while (seen < kThreads * kEntries) {
    const JournalMessage message = journal_.receive();
    ASSERT_FALSE(message.bytes.empty());
    ASSERT_EQ(member(message.field("QZLOG_ENTRY"), "seq"), std::to_string(++seen));
  }
  for (std::thread& thread : threads) thread.join();
}

/// A program that closes every descriptor, and opens a file that gets the number.
TEST_F(JournalSink, DescriptorClosedByOthers_IsOpenedAgainAndNotClosedTwice) {
  qz_LOG_JournalSink sink(settings_);
  const int number = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(number, 3);
  int socket = -1;
  for (int each = 3; each < number; ++each) {
    sockaddr_un address = {};
    socklen_t size = sizeof(address);
    const bool is_peer = ::getpeername(each, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    if (is_peer && journal_.path() == address.sun_path) socket = each;
  }
  ASSERT_GE(socket, 3);
  ::close(socket);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(journal_.receive_all().size(), 1U);
  for (int each = 3; each < number; ++each) {
    sockaddr_un address = {};
    socklen_t size = sizeof(address);
    if (::getpeername(each, reinterpret_cast<sockaddr*>(&address), &size) == 0) socket = each;
  }
  ASSERT_EQ(::dup2(number, socket), socket);
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(journal_.receive_all().size(), 1U);
  EXPECT_NE(::fcntl(socket, F_GETFD), -1);
  ::close(socket);
  ::close(number);
}

TEST_F(JournalSink, ForkedProcess_IsAWriterOfItsOwn) {
  qz_LOG_JournalSink sink(settings_);
  journal_.stop();
  EXPECT_FALSE(write_to(sink));
  journal_.start();
  expect_child_succeeds([&] { return write_to(sink, kDisk, 5) && sink.Close(0) == 0 ? 0 : 1; });
  const std::string of_child = journal_.receive().field("QZLOG_ENTRY");
  EXPECT_EQ(member(of_child, "seq"), "1");
  EXPECT_EQ(of_child.find('/' + std::to_string(getpid()) + '/'), std::string::npos);
  EXPECT_TRUE(write_to(sink));
  const std::string told = journal_.receive().field("QZLOG_ENTRY");
  EXPECT_NE(told.find("\"lost\""), std::string::npos) << told;
  EXPECT_NE(member(told, "writer"), member(of_child, "writer"));
  EXPECT_EQ(member(journal_.receive().field("QZLOG_ENTRY"), "seq"), "2");
}

TEST_F(JournalSink, ForkWhileAnEntryWaits_LeavesTheChildFree) {
  settings_.longest_wait_milliseconds = 3000;
  qz_LOG_JournalSink sink(settings_);
  settings_.longest_wait_milliseconds = 0;
  qz_LOG_JournalSink filler(settings_);
  while (write_to(filler)) {
  }
  std::thread waiting([&] { EXPECT_TRUE(write_to(sink)); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const long long begin = qzlog::SinkClock::steady_milliseconds();
  ChildProcess child([&] {
    journal_.receive_all();
    return write_to(sink, kDisk, 5) ? 0 : 2;
  });
  EXPECT_EQ(child.wait(), 0);
  waiting.join();
  EXPECT_LT(qzlog::SinkClock::steady_milliseconds() - begin, 2500);
}

TEST_F(JournalSink, Closed_TakesNoMore) {
  qz_LOG_JournalSink sink(settings_);
  EXPECT_TRUE(write_to(sink));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_EQ(journal_.receive_all().size(), 1U);
}

TEST_F(JournalSink, BadSettings_NameThem) {
  const auto thrown_with = [](const Settings& settings) {
    return thrown_by([&] { const qz_LOG_JournalSink sink(settings); });
  };
  using Refused = QZX_logging_illegal_argument;
  Settings settings = settings_;
  settings.longest_wait_milliseconds = 60001;
  EXPECT_EQ(thrown_with(settings), thrown<Refused>("longest_wait_milliseconds: 60001 is not from 0 to 60000"));
  settings = settings_;
  settings.journal_namespace = "a";
  EXPECT_EQ(thrown_with(settings),
            thrown<Refused>("socket_path: there is a journal_namespace, which has a path of its own"));
  settings.socket_path = "";
  settings.journal_namespace = "../a";
  EXPECT_EQ(thrown_with(settings),
            thrown<Refused>("journal_namespace: it is not made of up to 64 letters, digits and : - _ . @"));
  settings.journal_namespace = std::string(65, 'a');
  EXPECT_EQ(thrown_with(settings),
            thrown<Refused>("journal_namespace: it is not made of up to 64 letters, digits and : - _ . @"));
  settings.journal_namespace = "";
  settings.socket_path = std::string(108, 'a');
  EXPECT_EQ(thrown_with(settings), thrown<Refused>("socket_path: it is longer than 107 bytes"));
  settings.socket_path = std::string("a\0b", 3);
  EXPECT_EQ(thrown_with(settings), thrown<Refused>("socket_path: it has a zero byte"));
  settings = settings_;
  settings.product = "a\nb";
  EXPECT_EQ(thrown_with(settings), thrown<Refused>("product: it has a control character"));
}

TEST_F(JournalSink, NobodyAtTheSocket_IsToldAtTheBeginning) {
  journal_.stop();
  EXPECT_EQ(thrown_by([&] { const qz_LOG_JournalSink sink(settings_); }),
            thrown<QZX_logging_file_operation_failed>("The journal's socket " + journal_.path() +
                                                      " cannot be reached: Connection refused"));
  Settings settings;
  settings.journal_namespace = "no.such-name_";
  EXPECT_EQ(thrown_by([&] { const qz_LOG_JournalSink sink(settings); }),
            thrown<QZX_logging_file_operation_failed>("The journal's socket /run/systemd/journal.no.such-name_/socket "
                                                      "cannot be reached: No such file or directory"));
}

TEST_F(JournalSink, MakingItWithoutMemory_Throws) {
  EXPECT_GT(FailEveryAllocation([&] { const qz_LOG_JournalSink sink(settings_); }), 4U);
}

TEST_F(JournalSink, SecondEntryOfAThread_TakesNoMemory) {
  qz_LOG_JournalSink sink(settings_);
  const qz_LOG_LogEntry entry = make_entry();
  EXPECT_TRUE(sink.Write(entry));
  bool happened = false;
  {
    const AllocationFailure failure(1);
    static_cast<void>(sink.Write(entry));
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  EXPECT_EQ(counts_of(sink), "2/0/0");
}

TEST_F(JournalSink, WritingWithoutMemory_FailsOrSendsTheWholeMessage) {
  qz_LOG_JournalSink sink(settings_);
  const qz_LOG_LogEntry entry = make_entry();
  unsigned long long written = 0;
  for (unsigned nth = 1;; ++nth) {
    bool happened = false;
    {
      const AllocationFailure failure(nth);
      if (sink.Write(entry)) ++written;
      happened = failure.happened();
    }
    for (const JournalMessage& message : journal_.receive_all()) EXPECT_NO_THROW(message.fields()) << message.bytes;
    if (!happened) break;
    ASSERT_LT(nth, 1000U);
  }
  EXPECT_EQ(sink.GetCounts().written, written);
  EXPECT_GT(written, 0U);
}

}  // namespace
