#include "qzlog/syslog_sink.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <regex>
#include <set>
#include <thread>

#include "qzlog/limited_sink.h"
#include "qzlog/open_sinks.h"
#include "tests/sinks/sinks_fixture.h"
#include "tests/sinks/syslog_servers.h"
#include "tests/support/child_process.h"
#include "tests/support/names_section.h"

namespace {

using namespace qz_test;

using Settings = qz_LOG_SyslogSinkSettings;
using Clock = std::chrono::steady_clock;

constexpr unsigned kEvent = 2001;
constexpr unsigned kManyEvent = 2002;
constexpr unsigned kSecretEvent = 2003;

long long milliseconds_of(const std::function<void()>& work) {
  const auto begin = Clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

/// False when it does not come true in time.
bool comes_true(const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(kPatienceMilliseconds);
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// With what differs from run to run, and from machine to machine, in place of names.
std::string plain(const std::string& message) {
  char host[65] = {};
  gethostname(host, sizeof host - 1);
  std::string text =
      std::regex_replace(message, std::regex(R"("writer\\":\\"[^/]+/[0-9]+/[0-9]+\\")"), "\"writer\\\":\\\"W\\\"");
  text = std::regex_replace(text, std::regex(R"(,\\"definitions\\":\\"[0-9a-f]{16}\\")"), "");
  text = std::regex_replace(text, std::regex("shop\\[" + std::to_string(getpid()) + "\\]"), "shop[PID]");
  text = std::regex_replace(text, std::regex(" shop " + std::to_string(getpid()) + " "), " shop PID ");
  // The library sets these with the time.
  text = std::regex_replace(text, std::regex(R"(\\"TIMEZONE_DIFFERENCE\\":[0-9]+,\\"DAYLIGHT_SAVING_ACTIVE\\":false,)"),
                            "");
  text = std::regex_replace(text, std::regex(R"( TIMEZONE_DIFFERENCE="[0-9]+" DAYLIGHT_SAVING_ACTIVE="false")"), "");
  return std::regex_replace(text, std::regex(std::string("Z ") + host + " "), "Z HOST ");
}

class SyslogSink : public SettingsTest {
 protected:
  SyslogSink() {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    LdfFile file = {
        .globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}},
        .entries = {
            {.id = kEvent,
             .mask = 1,
             .message_text = "Disk %s%Name%",
             .attributes = {{"Name", TypeMBChar2K},
                            {"Free blocks=]\"Gr\xC3\xB6\xC3\x9F"
                             "e",
                             TypeUInt4},
                            {"ANameThatHasMoreThanTheThirtyTwoCharacters", TypeBool},
                            {"Entry", TypeUInt2},
                            {"OMITTED", TypeUInt2},
                            {"Load", TypeFloat}}},
            {.id = kManyEvent, .mask = 1, .message_text = "Disk %s%Name%", .attributes = {{"Name", TypeMBChar2K}}}}};
    for (int i = 0; i < 40; ++i) file.entries[1].attributes.push_back({"Attribute" + std::to_string(i), TypeUInt4});
    const std::string bytes = with_names(file.bytes(), {.events = {{kEvent, {"DISK FULL", ""}}}});
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", bytes).c_str());
  }

  std::string path() const { return folder_.path("log"); }
  Settings local() const {
    Settings settings;
    settings.path = path();
    settings.application = "shop";
    return settings;
  }
  static Settings remote(Settings::Transport transport, unsigned port) {
    Settings settings;
    settings.transport = transport;
    settings.host = "127.0.0.1";
    settings.port = port;
    settings.application = "shop";
    settings.longest_wait_milliseconds = 5000;
    return settings;
  }
  static Settings tcp(unsigned port) { return remote(Settings::kTcp, port); }
  static Settings udp(unsigned port) { return remote(Settings::kUdp, port); }
};

qz_LOG_LogEntry disk(const char* name = "vol1", unsigned level = 3, unsigned id = kEvent) {
  qz_LOG_LogEntry entry(id, level);
  entry.SetTimestamp(qz_Time::from_unix_seconds(kMoment), true);
  entry.AddAttribMBStr("Name", name);
  return entry;
}

qz_LOG_LogEntry many(const char* name = "vol1") {
  qz_LOG_LogEntry entry = disk(name, 3, kManyEvent);
  for (unsigned i = 0; i < 40; ++i) entry.AddAttrib4u(("Attribute" + std::to_string(i)).c_str(), i);
  return entry;
}

constexpr const char* kLine =
    R"({\"writer\":\"W\",\"seq\":1,\"written\":\"2026-11-21T08:15:30.250000000Z\",\"id\":2001,\"level\":3,)"
    R"(\"time\":\"2026-11-21T08:15:30Z\",\"name\":\"DISK FULL\",\"attributes\":{\"Name\":\"vol1\"}})";

TEST_F(SyslogSink, Local_TakesTheOlderForm) {
  const StoppedClock clock(kMoment);
  const TimeZone zone("Asia/Kathmandu");
  DatagramServer server(path());
  qz_LOG_SyslogSink sink(local());
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_EQ(plain(server.next()), "<14>Nov 21 14:00:30 shop[PID]: Disk vol1 [qzlog@32473 entry=\"" +
                                      std::string(kLine) + "\" Name=\"vol1\"]");
  EXPECT_EQ(counts_of(sink), "1/0/0");
}

TEST_F(SyslogSink, LocalDay_BelowTen_HasABlankInFront) {
  const StoppedClock clock(1796100930);  // 2026-12-01T04:55:30Z
  const TimeZone zone("UTC");
  DatagramServer server(path());
  qz_LOG_SyslogSink sink(local());
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_EQ(server.next().substr(0, 20), "<14>Dec  1 04:55:30 ");
}

TEST_F(SyslogSink, Udp_TakesRfc5424) {
  const StoppedClock clock(kMoment);
  DatagramServer server;
  Settings settings = udp(server.port());
  settings.enterprise_number = 4294967295U;
  settings.facility = 23;
  qz_LOG_SyslogSink sink(settings);
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_EQ(plain(server.next()),
            "<190>1 2026-11-21T08:15:30.250000Z HOST shop PID DISK_FULL [qzlog@4294967295 entry=\"" +
                std::string(kLine) + "\" Name=\"vol1\"] Disk vol1");
}

TEST_F(SyslogSink, Tcp_CountsBytes) {
  const StoppedClock clock(kMoment);
  StreamServer server;
  qz_LOG_SyslogSink sink(tcp(server.port()));
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_TRUE(sink.Write(disk("vol22")));
  const std::string first = server.next();
  EXPECT_EQ(plain(first), "<14>1 2026-11-21T08:15:30.250000Z HOST shop PID DISK_FULL [qzlog@32473 entry=\"" +
                              std::string(kLine) + "\" Name=\"vol1\"] Disk vol1");
  const std::string second = server.next();
  EXPECT_EQ(second.size(), first.size() + 3);
  EXPECT_NE(second.find(R"(\"seq\":2,)"), std::string::npos);
  EXPECT_TRUE(sink.Flush(5000));
  const auto head = [](const std::string& message) { return std::to_string(message.size()) + ' '; };
  EXPECT_EQ(sink.GetCounts().bytes, first.size() + second.size() + head(first).size() + head(second).size());
  EXPECT_EQ(sink.Close(5000), 0U);
  EXPECT_EQ(server.next(), "");
  EXPECT_EQ(server.rest(), "");
}

TEST_F(SyslogSink, Levels_BecomeSeverities) {
  DatagramServer server(path());
  qz_LOG_SyslogSink sink(local());
  std::string priorities;
  for (unsigned level = 0; level < 10; ++level) {
    EXPECT_TRUE(sink.Write(disk("vol1", level)));
    priorities += server.next().substr(0, 4);
  }
  EXPECT_EQ(priorities, "<15><15><14><14><13><12><12><11><10><9>N");
}

TEST_F(SyslogSink, WithoutEntries_HasTheMessageAlone) {
  const StoppedClock clock(kMoment);
  const TimeZone zone("UTC");
  DatagramServer server(path());
  Settings settings = local();
  settings.entries = false;
  qz_LOG_SyslogSink older(settings);
  EXPECT_TRUE(older.Write(disk()));
  EXPECT_EQ(plain(server.next()), "<14>Nov 21 08:15:30 shop[PID]: Disk vol1");
  settings.form = Settings::kRfc5424;
  qz_LOG_SyslogSink newer(settings);
  EXPECT_TRUE(newer.Write(disk()));
  EXPECT_EQ(plain(server.next()), "<14>1 2026-11-21T08:15:30.250000Z HOST shop PID DISK_FULL - Disk vol1");
}

TEST_F(SyslogSink, OlderForm_OverTheNetwork_NamesTheHost) {
  const StoppedClock clock(kMoment);
  const TimeZone zone("UTC");
  DatagramServer server;
  Settings settings = udp(server.port());
  settings.form = Settings::kOlder;
  settings.entries = false;
  qz_LOG_SyslogSink sink(settings);
  EXPECT_TRUE(sink.Write(disk()));
  char host[65] = {};
  gethostname(host, sizeof host - 1);
  EXPECT_EQ(plain(server.next()), "<14>Nov 21 08:15:30 " + std::string(host) + " shop[PID]: Disk vol1");
}

TEST_F(SyslogSink, Application_IsTheProgram_WhereNoneIsGiven) {
  DatagramServer server(path());
  Settings settings = local();
  settings.application.clear();
  qz_LOG_SyslogSink sink(settings);
  EXPECT_TRUE(sink.Write(disk()));
  const std::string expected =
      ' ' + std::string(program_invocation_short_name) + '[' + std::to_string(getpid()) + "]: Disk";
  EXPECT_NE(server.next().find(expected), std::string::npos);
}

TEST_F(SyslogSink, HostileTexts_AreEscaped) {
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  EXPECT_TRUE(sink.Write(disk("a\"b\\c]d\n\x1B\x7F\t")));
  const std::string message = server.next();
  EXPECT_NE(message.find(R"(\"Name\":\"a\\\"b\\\\c\]d\\\\n\\u001b\\u007F\\t\"}}" )"), std::string::npos) << message;
  EXPECT_NE(message.find(R"( Name="a\"b\\c\]d\\n\\x1B\\x7F\\x09"])"), std::string::npos) << message;
  EXPECT_EQ(message.find_first_of("\t\n\x1B\x7F"), std::string::npos);
  EXPECT_NE(message.find(R"(] Disk a"b\c]d\n\x1B\x7F\x09)"), std::string::npos) << message;
}

TEST_F(SyslogSink, TextBeyondAscii_HasTheMarkOfUtf8) {
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  EXPECT_TRUE(
      sink.Write(disk("Gr\xC3\xB6\xC3\x9F"
                      "e")));
  EXPECT_NE(server.next().find("\"] \xEF\xBB\xBF"
                               "Disk Gr\xC3\xB6\xC3\x9F"
                               "e"),
            std::string::npos);
}

TEST_F(SyslogSink, OtherCodePage_IsSentAsUtf8) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  EXPECT_TRUE(
      sink.Write(disk("Gr\xF6\xDF"
                      "e\n")));
  const std::string message = server.next();
  EXPECT_NE(message.find("\xEF\xBB\xBF"
                         "Disk Gr\xC3\xB6\xC3\x9F"
                         "e\\n"),
            std::string::npos)
      << message;
}

TEST_F(SyslogSink, Names_BecomeWhatParametersMayBeCalled) {
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  qz_LOG_LogEntry entry = disk();
  entry.AddAttrib4u(
      "Free blocks=]\"Gr\xC3\xB6\xC3\x9F"
      "e",
      7);
  entry.AddAttribBool("ANameThatHasMoreThanTheThirtyTwoCharacters", true);
  entry.AddAttrib2u("Entry", 1);
  entry.AddAttrib2u("OMITTED", 2);
  entry.AddAttribFloat8("Load", 0.5);
  EXPECT_TRUE(sink.Write(entry));
  const std::string message = server.next();
  EXPECT_NE(
      message.find(R"(" Name="vol1" Free_blocks___Gr__e="7" ANameThatHasMoreThanTheThirtyTwo="true" Load="0.5"] Disk)"),
      std::string::npos)
      << message;
}

TEST_F(SyslogSink, SensitiveAttributes_AreSentAsLinesShowThem) {
  const LdfFile file = {.entries = {{.id = kSecretEvent,
                                     .mask = 1,
                                     .message_text = "Key %s%Key% of %s%User%",
                                     .attributes = {{"Key", TypeMBChar32}, {"User", TypeMBChar32}}}}};
  const auto mark = [](qzlog::Sensitivity sensitivity) { return static_cast<unsigned>(sensitivity); };
  const NamesSection names = {.marks = {{{1, kSecretEvent, "Key"}, mark(qzlog::Sensitivity::kDrop)},
                                        {{1, kSecretEvent, "User"}, mark(qzlog::Sensitivity::kHash)}}};
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("secret.ldf", with_names(file.bytes(), names)).c_str());
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  qz_LOG_LogEntry entry(kSecretEvent, 3);
  entry.AddAttribMBStr("Key", "opensesame");
  entry.AddAttribMBStr("User", "alibaba");
  EXPECT_TRUE(sink.Write(entry));
  const std::string message = server.next();
  EXPECT_EQ(message.find("opensesame"), std::string::npos) << message;
  EXPECT_EQ(message.find("alibaba"), std::string::npos) << message;
  EXPECT_EQ(message.find(" Key="), std::string::npos) << message;
  EXPECT_NE(message.find(" User=\"sha256:"), std::string::npos) << message;
}

/// `NAME="VALUE"` of a message as it stands there, "" without it.
std::string parameter(const std::string& message, const std::string& name) {
  const std::string beginning = ' ' + name + "=\"";
  const std::size_t found = message.find(beginning);
  if (found == std::string::npos) return "";
  const std::size_t begin = found + beginning.size();
  std::size_t end = begin;
  while (message[end] != '"') end += message[end] == '\\' ? 2 : 1;
  return message.substr(begin, end - begin);
}

TEST_F(SyslogSink, SmallerAndSmaller_LosesAttributesThenTextThenTheEntry) {
  StreamServer server;
  const std::string name(500, 'x');
  constexpr std::size_t kAttributes = 43;
  std::size_t attributes_before = kAttributes;
  bool had_entry = true;
  std::set<std::string> kinds;
  for (unsigned limit = 7000; limit >= 480; limit -= 13) {
    Settings settings = tcp(server.port());
    settings.largest_message_bytes = limit;
    qz_LOG_SyslogSink sink(settings);
    ASSERT_TRUE(sink.Write(many(name.c_str())));
    ASSERT_TRUE(server.accept());
    const std::string message = server.next();
    ASSERT_LE(message.size(), limit);
    const std::string entry = parameter(message, "entry");
    const bool has_text = message.find("Disk " + name) != std::string::npos;
    std::size_t attributes = 0;
    for (const char* const name_of_one : {"Name", "TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE"}) {
      attributes += parameter(message, name_of_one).empty() ? 0 : 1;
    }
    for (int i = 0; i < 40; ++i) attributes += parameter(message, "Attribute" + std::to_string(i)).empty() ? 0 : 1;
    const std::size_t missing = kAttributes - attributes + (entry.empty() ? 1 : 0);
    EXPECT_EQ(parameter(message, "omitted"), missing == 0 ? "" : std::to_string(missing)) << limit;
    EXPECT_LE(attributes, attributes_before);
    EXPECT_TRUE(attributes == 0 || (has_text && !entry.empty())) << limit;
    EXPECT_TRUE(had_entry || entry.empty());
    EXPECT_EQ(sink.GetStatus().shortened, missing != 0 || !has_text ? 1U : 0U);
    EXPECT_EQ(sink.GetStatus().without_entry, entry.empty() ? 1U : 0U);
    attributes_before = attributes;
    had_entry = !entry.empty();
    const std::string kind = attributes == kAttributes ? "all" : attributes != 0 ? "some" : "none";
    kinds.insert(kind + (has_text ? " text" : "") + (had_entry ? " entry" : ""));
  }
  EXPECT_EQ(kinds, (std::set<std::string>{"all text entry", "some text entry", "none entry", "none text entry",
                                          "none text", "none"}));
}

TEST_F(SyslogSink, LargeLocalMessage_IsOneDatagram) {
  DatagramServer server(path());
  Settings settings = local();
  settings.largest_message_bytes = 1U << 24;
  qz_LOG_SyslogSink sink(settings);
  const std::string name(2000, '\x01');  // six bytes each, in its line and in its parameter
  EXPECT_TRUE(sink.Write(many(name.c_str())));
  EXPECT_GT(server.next().size(), 30000U);
  EXPECT_EQ(counts_of(sink), "1/0/0");
}

TEST_F(SyslogSink, BadSettings_AreNamed) {
  const auto thrown_with = [](const std::function<void(Settings&)>& change) {
    Settings settings;
    change(settings);
    return thrown_by([&] { const qz_LOG_SyslogSink sink(settings); });
  };
  const auto refused = [](const char* text) { return thrown<QZX_logging_illegal_argument>(text); };
  EXPECT_EQ(thrown_with([](Settings& s) { s.path.clear(); }), refused("path: it is empty"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.path.assign(108, 'x'); }),
            refused(("path: '" + std::string(108, 'x') + "' cannot be the path of a socket").c_str()));
  EXPECT_EQ(thrown_with([](Settings& s) { s.transport = Settings::kUdp; }), refused("host: it is empty"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.transport = Settings::kTcp, s.host = "x", s.port = 0; }),
            refused("port: 0 is not from 1 to 65535"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.transport = static_cast<Settings::Transport>(3); }),
            refused("transport: it is neither kLocal nor kUdp nor kTcp"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.form = static_cast<Settings::Form>(3); }),
            refused("form: it is neither kUsual nor kRfc5424 nor kOlder"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.application = "my shop"; }),
            refused("application: it has other characters than those of ASCII, or a blank, '[', ']' or ':'"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.application.assign(49, 'x'); }),
            refused("application: it is longer than 48 characters"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.facility = 24; }), refused("facility: 24 is not from 0 to 23"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.enterprise_number = 0; }),
            refused("enterprise_number: 0 is not from 1 to 4294967295"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.largest_message_bytes = 479; }),
            refused("largest_message_bytes: 479 is not from 480 to 16777216"));
  EXPECT_EQ(
      thrown_with([](Settings& s) { s.transport = Settings::kUdp, s.host = "x", s.largest_message_bytes = 65508; }),
      refused("largest_message_bytes: 65508 is not from 480 to 65507"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.longest_wait_milliseconds = 60001; }),
            refused("longest_wait_milliseconds: 60001 is not from 0 to 60000"));
  EXPECT_EQ(thrown_with([](Settings& s) { s.longest_pause_milliseconds = 99; }),
            refused("longest_pause_milliseconds: 99 is not from 100 to 3600000"));
}

TEST_F(SyslogSink, Closed_TakesNoMore) {
  DatagramServer server(path());
  qz_LOG_SyslogSink sink(local());
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_FALSE(sink.Write(disk()));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_EQ(counts_of(sink), "1/1/0");
  EXPECT_EQ(server.all_there().size(), 1U);
}

TEST_F(SyslogSink, NoSocket_FailsAtOnce_AndIsToldWhenThereIsOne) {
  const StoppedClock clock(kMoment);
  const TimeZone zone("UTC");
  qz_LOG_SyslogSink sink(local());
  const long long time = milliseconds_of([&] {
    for (int i = 0; i < 100; ++i) EXPECT_FALSE(sink.Write(disk()));
  });
  EXPECT_LT(time, 2000);
  EXPECT_EQ(sink.GetStatus().failure, "No such file or directory");
  DatagramServer server(path());
  unsigned failed = 100;
  EXPECT_TRUE(comes_true([&] { return sink.Write(disk()) || ++failed == 0; }));
  const std::string line =
      R"({\"writer\":\"W\",\"seq\":1,\"written\":\"2026-11-21T08:15:30.250000000Z\",\"lost\":[{\"id\":2001,\"level\":3,\"count\":)" +
      std::to_string(failed) + R"(,\"since\":\"2026-11-21T08:15:30.250000000Z\"}\]})";
  EXPECT_EQ(plain(server.next()),
            "<14>Nov 21 08:15:30 shop[PID]: " + std::to_string(failed) +
                " entries of event 2001, level 3, were lost since 2026-11-21T08:15:30Z [qzlog@32473 entry=\"" + line +
                "\"]");
  EXPECT_NE(server.next().find(R"(\"seq\":2,)"), std::string::npos);
  EXPECT_EQ(counts_of(sink), "1/" + std::to_string(failed) + "/0");
  EXPECT_EQ(sink.GetStatus().failure, "");
  EXPECT_TRUE(sink.GetStatus().connected);
}

TEST_F(SyslogSink, LocalServiceStartedAgain_IsFoundAtOnce) {
  DatagramServer server(path());
  qz_LOG_SyslogSink sink(local());
  EXPECT_TRUE(sink.Write(disk()));
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // the first one was a good one
  server.close();
  DatagramServer next(path());
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_NE(next.next().find("Disk vol1"), std::string::npos);
  EXPECT_EQ(sink.GetStatus().connections, 2U);
  EXPECT_EQ(counts_of(sink), "2/0/0");
}

TEST_F(SyslogSink, LocalServiceThatDoesNotRead_IsWaitedForOnce) {
  DatagramServer server(path());
  Settings settings = local();
  settings.longest_wait_milliseconds = 300;
  qz_LOG_SyslogSink sink(settings);
  unsigned written = 0;
  while (sink.Write(disk())) ++written;
  const long long time = milliseconds_of([&] {
    for (int i = 0; i < 50; ++i) EXPECT_FALSE(sink.Write(disk()));
  });
  EXPECT_LT(time, 2000);
  EXPECT_EQ(server.all_there().size(), written);
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_NE(server.next().find("51 entries of event 2001, level 3, were lost"), std::string::npos);
}

TEST_F(SyslogSink, UdpPortWithoutServer_CountsWhatWasRefused) {
  const unsigned port = free_port(SOCK_DGRAM);
  qz_LOG_SyslogSink sink(udp(port));
  for (int i = 0; i < 10; ++i) sink.Write(disk());
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  sink.Write(disk());
  const qz_LOG_SinkCounts counts = sink.GetCounts();
  EXPECT_EQ(counts.written + counts.failed, 11U);
  EXPECT_GT(counts.failed, 0U);
  EXPECT_EQ(sink.GetStatus().refused + 0, counts.failed);
}

TEST_F(SyslogSink, TcpServerThatIsNotThere_IsTriedAtGrowingDistances) {
  const unsigned port = free_port(SOCK_STREAM);
  Settings settings = tcp(port);
  settings.longest_pause_milliseconds = 400;
  qz_LOG_SyslogSink sink(settings);
  const long long time = milliseconds_of([&] {
    for (int i = 0; i < 1000; ++i) EXPECT_FALSE(sink.Write(disk()));
  });
  EXPECT_LT(time, 5000);
  EXPECT_EQ(sink.GetStatus().failure, "Connection refused");
  StreamServer server(port);
  EXPECT_TRUE(comes_true([&] { return sink.Write(disk()); }));
  const std::string lost = server.next();
  EXPECT_NE(lost.find("entries of event 2001, level 3, were lost since"), std::string::npos) << lost;
  EXPECT_NE(server.next().find("Disk vol1"), std::string::npos);
}

TEST_F(SyslogSink, TcpServerThatDoesNotRead_IsWaitedForOnce_AndNothingIsTornOrDoubled) {
  StreamServer server;
  server.shrink_window();
  Settings settings = tcp(server.port());
  settings.longest_wait_milliseconds = 300;
  qz_LOG_SyslogSink sink(settings);
  const std::string name(2000, 'x');
  unsigned given = 1;
  EXPECT_TRUE(sink.Write(disk(name.c_str())));
  ASSERT_TRUE(server.accept());
  for (; sink.Write(disk(name.c_str())); ++given) {
  }
  ++given;
  // The kernel may find room for some more meanwhile. Only behind one that was taken the server is waited for again.
  long long time = 0;
  bool is_taken = false;
  for (int i = 0; i < 50; ++i) {
    const bool was_taken = is_taken;
    const long long of_write = milliseconds_of([&] { is_taken = sink.Write(disk(name.c_str())); });
    if (!was_taken) time += of_write;
  }
  given += 50;
  EXPECT_LT(time, 2000);
  EXPECT_TRUE(comes_true([&] {
    ++given;
    return !sink.Write(disk(name.c_str())) && !sink.Flush(0);
  }));
  unsigned messages = 0;
  const auto take_all = [&](int patience) {
    for (const std::string& message : server.all_there(patience)) {
      std::smatch found;
      ASSERT_TRUE(std::regex_search(message, found, std::regex(R"(\\"seq\\":([0-9]+),)")));
      EXPECT_EQ(found[1].str(), std::to_string(++messages));
    }
  };
  take_all(300);
  EXPECT_TRUE(comes_true([&] {
    ++given;
    return sink.Write(disk());
  }));
  take_all(300);
  EXPECT_TRUE(sink.Flush(5000));
  take_all(300);
  const qz_LOG_SinkCounts counts = sink.GetCounts();
  EXPECT_EQ(counts.written + counts.failed, given);
  EXPECT_EQ(messages, counts.written + 1);  // and what tells of the others
  EXPECT_EQ(server.rest(), "");
}

TEST_F(SyslogSink, TcpServerThatNeverStopsTalking_IsNotListenedToForEver) {
  StreamServer server;
  qz_LOG_SyslogSink sink(tcp(server.port()));
  EXPECT_TRUE(sink.Write(disk()));
  ASSERT_TRUE(server.accept());
  const TalkingServer talking(server.connection().get());
  EXPECT_LT(milliseconds_of([&] {
              for (int count = 0; count < 50; ++count) {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                EXPECT_TRUE(sink.Write(disk()));
              }
            }),
            3000);
}

TEST_F(SyslogSink, TcpServerThatEndsAndStartsAgain_IsFound) {
  StreamServer server;
  qz_LOG_SyslogSink sink(tcp(server.port()));
  EXPECT_TRUE(sink.Write(disk("a")));
  EXPECT_NE(server.next().find("Disk a"), std::string::npos);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  server.close_connection();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_TRUE(sink.Write(disk("b")));
  ASSERT_TRUE(server.accept());
  EXPECT_NE(server.next().find("Disk b"), std::string::npos);
  EXPECT_EQ(counts_of(sink), "2/0/0");
  EXPECT_EQ(sink.GetStatus().connections, 2U);
}

/// What messages tell as lost, in all: a connection that breaks when losses are told adds those behind the message.
unsigned long long lost_in(StreamServer& server, const std::string& also_expected, unsigned long long all) {
  static const std::regex kTold("([0-9]+) entries of event 2001, level 3, were lost");
  unsigned long long lost = 0;
  bool is_there = false;
  std::smatch found;
  while (!is_there || lost < all) {
    const std::string message = server.next();
    if (message.empty()) break;
    if (std::regex_search(message, found, kTold)) lost += std::stoull(found[1].str());
    is_there = is_there || message.find(also_expected) != std::string::npos;
  }
  EXPECT_TRUE(is_there) << also_expected;
  return lost;
}

TEST_F(SyslogSink, TcpConnectionThatBreaks_CountsAndTellsWhatWasNotConfirmed) {
  StreamServer server;
  server.shrink_window();
  Settings settings = tcp(server.port());
  settings.longest_wait_milliseconds = 200;
  qz_LOG_SyslogSink sink(settings);
  const std::string name(2000, 'x');
  EXPECT_TRUE(sink.Write(disk(name.c_str())));
  ASSERT_TRUE(server.accept());
  while (sink.Write(disk(name.c_str()))) {
  }
  const qz_LOG_SinkCounts before = sink.GetCounts();
  server.break_connection();
  EXPECT_TRUE(comes_true([&] { return sink.Write(disk("new")); }));
  const qz_LOG_SinkCounts after = sink.GetCounts();
  EXPECT_LT(after.written, before.written);
  EXPECT_EQ(after.failed - before.failed >= sink.GetStatus().refused, true);
  EXPECT_EQ(sink.GetStatus().refused, before.written - (after.written - 1));
  ASSERT_TRUE(server.accept());
  static_cast<void>(sink.Flush(kPatienceMilliseconds));
  EXPECT_EQ(lost_in(server, "Disk new", after.failed), after.failed);
}

/// A server that begins and ends all the time, with and without courtesy.
TEST_F(SyslogSink, TcpServerThatStartsOverAndOver_EachEntryCountsOnceAndNoneIsDoubled) {
  StreamServer server;
  std::atomic<bool> is_done{false};
  std::set<std::string> seen;
  unsigned doubled = 0;
  std::thread serving([&] {
    for (unsigned turn = 0; !is_done; ++turn) {
      if (!server.accept(10)) continue;
      const auto end = Clock::now() + std::chrono::milliseconds(turn % 40);
      while (Clock::now() < end) {
        const std::string message = server.next(5);
        if (message.empty()) break;
        if (!seen.insert(parameter(message, "Name")).second && message.find("were lost") == std::string::npos)
          ++doubled;
      }
      if (turn % 2 == 0) server.break_connection();
      if (turn % 2 == 1) server.close_connection();
    }
  });
  Settings settings = tcp(server.port());
  settings.longest_wait_milliseconds = 50;
  settings.longest_pause_milliseconds = 100;
  unsigned given = 0;
  {
    qz_LOG_SyslogSink sink(settings);
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (Clock::now() < end) sink.Write(disk(std::to_string(given++).c_str()));
    sink.Close(1000);
    const qz_LOG_SinkCounts counts = sink.GetCounts();
    EXPECT_EQ(counts.written + counts.failed, given);
    EXPECT_GT(sink.GetStatus().connections, 5U);
    EXPECT_GT(counts.written, 0U);
  }
  is_done = true;
  serving.join();
  EXPECT_EQ(doubled, 0U);
}

TEST_F(SyslogSink, Name_IsLookedUp) {
  StreamServer server;
  Settings settings = tcp(server.port());
  settings.host = "localhost";
  qz_LOG_SyslogSink sink(settings);
  EXPECT_TRUE(sink.Write(disk()));
  EXPECT_NE(server.next().find("Disk vol1"), std::string::npos);
}

TEST_F(SyslogSink, UnknownName_NeverKeepsTheApplicationWaiting) {
  Settings settings = tcp(514);
  settings.host = "no-such-host.invalid";
  settings.longest_wait_milliseconds = 100;
  qz_LOG_SyslogSink sink(settings);
  EXPECT_LT(milliseconds_of([&] {
              for (int i = 0; i < 20; ++i) EXPECT_FALSE(sink.Write(disk()));
            }),
            2000);
}

TEST_F(SyslogSink, AddressThatNeverAnswers_IsWaitedForOnce) {
  // A listener whose queue answers no more.
  const ServerSocket listener = bound_socket(SOCK_STREAM);
  listen(listener.get(), 0);
  std::vector<ServerSocket> queue;
  for (int i = 0; i < 4; ++i) {
    queue.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const sockaddr_in address = loopback(port_of(listener));
    static_cast<void>(connect(queue.back().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  }
  Settings settings = tcp(port_of(listener));
  settings.longest_wait_milliseconds = 200;
  qz_LOG_SyslogSink sink(settings);
  const long long time = milliseconds_of([&] {
    for (int i = 0; i < 20; ++i) EXPECT_FALSE(sink.Write(disk()));
  });
  EXPECT_GE(time, 190);
  EXPECT_LT(time, 1500);
}

TEST_F(SyslogSink, ForkedProcess_HasAConnectionAndNumbersOfItsOwn) {
  StreamServer server;
  qz_LOG_SyslogSink sink(tcp(server.port()));
  EXPECT_TRUE(sink.Write(disk("parent1")));
  const std::string first = server.next();
  expect_child_succeeds([&] {
    const bool is_written = sink.Write(disk("child"));
    return is_written && sink.Close(5000) == 0 ? 0 : 1;
  });
  EXPECT_TRUE(sink.Write(disk("parent2")));
  const std::string second = server.next();
  EXPECT_NE(first.find(R"(\"seq\":1,)"), std::string::npos);
  EXPECT_NE(second.find(R"(\"seq\":2,)"), std::string::npos);
  EXPECT_NE(second.find("Disk parent2"), std::string::npos);
  ASSERT_TRUE(server.accept());
  const std::string childs = server.next();
  EXPECT_NE(childs.find(R"(\"seq\":1,)"), std::string::npos);
  EXPECT_NE(childs.find("Disk child"), std::string::npos);
  EXPECT_EQ(counts_of(sink), "2/0/0");
}

TEST_F(SyslogSink, UsualMessage_TakesNoMemory) {
  DatagramServer server;
  qz_LOG_SyslogSink sink(udp(server.port()));
  const qz_LOG_LogEntry entry = many();
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(sink.Write(entry));
  bool allocated = false;
  bool written = false;
  {
    const AllocationFailure failure(1);
    written = sink.Write(entry);
    allocated = failure.happened();
  }
  EXPECT_TRUE(written);
  EXPECT_FALSE(allocated);
}

TEST_F(SyslogSink, WithoutMemory_FailsAndGoesOnAfterwards) {
  for (unsigned nth = 1; nth < 200; ++nth) {
    const StreamServer server;
    qz_LOG_SyslogSink sink(tcp(server.port()));
    bool happened = false;
    std::thread([&] {  // without memory of an earlier use
      const qz_LOG_LogEntry entry = disk();
      const AllocationFailure failure(nth);
      sink.Write(entry);
      happened = failure.happened();
    })
        .join();
    EXPECT_TRUE(comes_true([&] { return sink.Write(disk("after")); }));
    const qz_LOG_SinkCounts counts = sink.GetCounts();
    EXPECT_GE(counts.written, 1U);
    EXPECT_EQ(sink.Close(5000), 0U);
    if (!happened) return;
  }
  FAIL() << "there is no end of allocations";
}

TEST_F(SyslogSink, HeldEntries_AreTold) {
  const StoppedClock clock(kMoment);
  DatagramServer server(path());
  qz_LOG_LimitedSinkSettings limit;
  limit.entries_per_second = 1;
  qz_LOG_LimitedSink sink(std::unique_ptr<qz_LOG_Sink>(new qz_LOG_SyslogSink(local())), limit);
  for (int i = 0; i < 3; ++i) sink.Write(disk());
  EXPECT_TRUE(sink.Flush(0));
  server.next();
  const std::string told = server.next();
  EXPECT_NE(told.find("2 entries of event 2001, level 3, were held back since 2026-11-21T08:15:30Z"),
            std::string::npos);
  EXPECT_NE(told.find(R"(\"held\":[{\"id\":2001,\"level\":3,\"count\":2,)"), std::string::npos);
}

TEST_F(SyslogSink, Section_OpensIt) {
  DatagramServer server(path());
  const std::string file =
      folder_.write("sinks.conf", "[log]\nsink = syslog\npath = " + path() +
                                      "\ntransport = local\nform = rfc5424\napplication = shop\nfacility = local7\n"
                                      "enterprise_number = 7\nentries = yes\nlargest_message_bytes = 2000\n"
                                      "longest_wait_milliseconds = 10\nlongest_pause_milliseconds = 200\n");
  const std::unique_ptr<qz_LOG_Sink> sink = qz_LOG_OpenSinks(file.c_str(), "log");
  EXPECT_TRUE(sink->Write(disk()));
  const std::string message = server.next();
  EXPECT_EQ(message.substr(0, 7), "<190>1 ");
  EXPECT_NE(message.find("[qzlog@7 entry="), std::string::npos);
}

TEST_F(SyslogSink, Threads_ShareAConnection_AndNothingIsMixed) {
  StreamServer server;
  qz_LOG_SyslogSink sink(tcp(server.port()));
  constexpr unsigned kThreads = 4;
  constexpr unsigned kEach = 300;
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < kThreads; ++number) {
    threads.emplace_back([&sink] {
      for (unsigned i = 0; i < kEach; ++i) EXPECT_TRUE(sink.Write(disk()));
    });
  }
  for (unsigned number = 1; number <= kThreads * kEach; ++number) {
    ASSERT_NE(server.next().find(R"(\"seq\":)" + std::to_string(number) + ','), std::string::npos);
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counts_of(sink), "1200/0/0");
}

}  // namespace
