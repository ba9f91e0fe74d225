// Entries through journald itself, as a namespace of its own that the test starts, and back.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/entry_lines.h"
#include "qzlog/journal_sink.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"
#include "tests/support/ldf_file.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/settings_test.h"
#include "tools/logs/journal_log.h"
#include "tools/system/child_process.h"

namespace {

using namespace qz_test;
namespace fs = std::filesystem;

constexpr const char* kJournald = "/lib/systemd/systemd-journald";
constexpr unsigned kEvent = 1001;
constexpr unsigned kLargeEvent = 1002;
constexpr int kLongTexts = 150;

/// A namespace of journald's; without `reason` it runs.
class Journald {
 public:
  explicit Journald(std::string name) : name_(std::move(name)) {
    if (::geteuid() != 0) {
      reason_ = "journald can be started by root only";
    } else if (::access(kJournald, X_OK) != 0 || std::system("command -v journalctl > /dev/null") != 0) {
      reason_ = "systemd is not installed";
    } else if (!fs::exists("/etc/machine-id")) {
      reason_ = "the machine has no /etc/machine-id";
    } else {
      configuration_ = "/etc/systemd/journald@" + name_ + ".conf";
      std::ofstream(configuration_) << "[Journal]\nStorage=persistent\nRateLimitIntervalSec=0\nForwardToWall=no\n";
      start();
    }
  }
  ~Journald() {
    stop();
    std::error_code ignored;
    if (!configuration_.empty()) fs::remove(configuration_, ignored);
    fs::remove_all(runtime_folder(), ignored);
    for (const char* const folder : {"/var/log/journal", "/run/log/journal"}) {
      for (const auto& each : fs::directory_iterator(folder, ignored)) {
        if (each.path().filename().string().ends_with('.' + name_)) fs::remove_all(each.path(), ignored);
      }
    }
  }
  Journald(const Journald&) = delete;
  Journald& operator=(const Journald&) = delete;

  const std::string& name() const { return name_; }
  const std::string& reason() const { return reason_; }

  void start() {
    process_ = ::fork();
    if (process_ == 0) {
      const int nowhere = ::open("/dev/null", O_RDWR);
      for (const int each : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, each);
      ::execl(kJournald, kJournald, name_.c_str(), nullptr);
      ::_exit(127);
    }
    for (int i = 0; i < 3000 && !answers(); ++i) {
      if (::waitpid(process_, nullptr, WNOHANG) == process_) {
        process_ = -1;
        reason_ = "journald cannot be started here";
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  void stop() {
    if (process_ <= 0) return;
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
  }
  /// What was sent so far is in the files when this returns.
  void sync() const { EXPECT_EQ(qzlog_tool::run_program({"journalctl", "--namespace=" + name_, "--sync"}).status, 0); }

 private:
  std::string runtime_folder() const { return "/run/systemd/journal." + name_; }
  bool answers() const {
    if (!fs::exists(runtime_folder() + "/socket")) return false;
    try {
      qz_LOG_JournalSinkSettings settings;
      settings.journal_namespace = name_;
      const qz_LOG_JournalSink sink(settings);
      return true;
    } catch (const QZX_logging_file_operation_failed&) {
      return false;
    }
  }

  const std::string name_;
  std::string reason_;
  std::string configuration_;
  pid_t process_ = -1;
};

LdfFile definitions() {
  std::vector<LdfAttribute> attributes;
  for (int code = TypeBool; code <= TypeTimestamp; ++code) {
    attributes.push_back({AttributeTypeList[code - 1].name, static_cast<unsigned>(code)});
  }
  LdfEntry large{.id = kLargeEvent, .mask = 1, .message_text = "Large %s%Text0%"};
  for (int i = 0; i < kLongTexts; ++i) large.attributes.push_back({"Text" + std::to_string(i), TypeMBChar2K});
  return {.globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2},
                      {"DAYLIGHT_SAVING_ACTIVE", TypeBool},
                      {"na\"me\\\n{\xC3\xA4}", TypeMBChar128}},
          .entries = {{.id = kEvent,
                       .mask = 1,
                       .message_text = "%s%TypeMBChar2K% of %d%TypeUInt4%, %s%TypeChar32%",
                       .attributes = attributes},
                      large}};
}

/// Entries of every type with what parsers, terminals and shells take for something else.
class HostileEntries {
 public:
  explicit HostileEntries(RandomNumbers& random) : random_(random) {}

  qz_LOG_LogEntry entry() {
    if (random_.one_in(200)) return large_entry();
    qz_LOG_LogEntry result(kEvent, static_cast<unsigned>(random_.between(0, 9)));
    if (random_.one_in(2)) result.SetTimestamp(moment(), true);
    for (std::size_t count = random_.below(12); count > 0; --count) add(result);
    if (random_.one_in(3)) result.AddAttribMBStr("na\"me\\\n{\xC3\xA4}", text(100).c_str());
    return result;
  }

 private:
  qz_LOG_LogEntry large_entry() {
    qz_LOG_LogEntry result(kLargeEvent, 9);
    for (int i = 0; i < kLongTexts; ++i) {
      result.AddAttribMBStr(("Text" + std::to_string(i)).c_str(), text(1900).c_str());
    }
    return result;
  }

  std::string text(std::size_t longest) {
    static constexpr const char* kPieces[] = {"\"",
                                              "\\",
                                              "\x1B[2J",
                                              "]",
                                              "=",
                                              "{",
                                              "\nQZLOG_ENTRY={}\n\n",
                                              "\r",
                                              "\t",
                                              "\x01",
                                              "%s",
                                              "\x7F",
                                              "\xC3\xA4",
                                              "\xE2\x80\xAE",
                                              "\xF0\x9F\x98\x80",
                                              "\xEF\xBF\xBF",
                                              "\xFF",
                                              "\xC3",
                                              "\xED\xA0\x80",
                                              "@",
                                              "' OR 1=1",
                                              " "};
    std::string result;
    if (random_.one_in(6)) return result;
    if (random_.one_in(6)) return random_.text(random_.below(longest / 3) + 1);
    const std::size_t wanted = random_.one_in(8) ? longest / 3 : random_.below(12);
    while (result.size() < wanted) result += kPieces[random_.below(std::size(kPieces))];
    return result.substr(0, longest / 3);
  }

  qz_Time moment() { return qz_Time::from_unix_seconds(random_.between(-62135596800, 253402300799)); }

  double real() {
    const double values[] = {0.1, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 5e-324, 1.7976931348623157e308, 1e22};
    return random_.one_in(2) ? values[random_.below(std::size(values))]
                             : static_cast<double>(random_.between(-1000000, 1000000)) / 1000;
  }

  template <typename Number>
  Number number() {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(random_.between(Limits::min(), Limits::max()));
  }

  void add(qz_LOG_LogEntry& entry) {
    const auto code = static_cast<int>(random_.between(TypeBool, TypeTimestamp));
    const char* const name = AttributeTypeList[code - 1].name;
    switch (code) {
      case TypeBool:
        return entry.AddAttribBool(name, random_.one_in(2));
      case TypeUInt1:
        return entry.AddAttrib1u(name, number<unsigned char>());
      case TypeSInt1:
        return entry.AddAttrib1(name, number<char>());
      case TypeUInt2:
        return entry.AddAttrib2u(name, number<unsigned short>());
      case TypeSInt2:
        return entry.AddAttrib2(name, number<short>());
      case TypeUInt4:
        return entry.AddAttrib4u(name, number<unsigned>());
      case TypeSInt4:
        return entry.AddAttrib4(name, number<int>());
      case TypeFloat:
        return entry.AddAttribFloat8(name, real());
      default:
        break;
    }
    if (code >= TypeDate) return entry.AddAttribTime(name, moment());
    const std::string value = text(code == TypeMBChar2K || code == TypeChar2K ? 2000 : 30);
    if (code >= TypeMBChar32) return entry.AddAttribMBStr(name, value.c_str());
    entry.AddAttribStr(name, value.c_str());
  }

  RandomNumbers& random_;
};

/// What an entry holds, attribute by attribute in the order of the definition, texts byte by byte.
class Contents : public qz_LOG_AttributeVisitor {
 public:
  static std::string of(const qz_LOG_LogEntry& entry) {
    Contents contents;
    contents.add("id", std::to_string(entry.GetEntryID()));
    contents.add("level", std::to_string(entry.GetLogLevel()));
    contents.add("time", std::to_string(entry.GetTimestamp(true).unix_seconds()));
    entry.VisitAttributes(contents);
    return contents.text_;
  }

  void VisitBool(const char* name, qz_AttributeType, bool value) override { add(name, value ? "true" : "false"); }
  void VisitUnsigned(const char* name, qz_AttributeType, unsigned value) override { add(name, std::to_string(value)); }
  void VisitSigned(const char* name, qz_AttributeType, int value) override { add(name, std::to_string(value)); }
  void VisitFloat(const char* name, qz_AttributeType, double value) override {
    add(name, std::isnan(value) ? "NaN" : std::to_string(std::bit_cast<std::uint64_t>(value)));
  }
  void VisitTime(const char* name, qz_AttributeType, const qz_Time& value) override {
    add(name, std::to_string(value.unix_seconds()));
  }
  void VisitText(const char* name, qz_AttributeType, const char* text, unsigned length) override {
    add(name, std::string(text, length));
  }

 private:
  void add(const std::string& name, const std::string& value) { text_ += name + "=" + value + "\n"; }

  std::string text_;
};

std::string message_of(const qz_LOG_LogEntry& entry) {
  try {
    return entry.FormatMessage();
  } catch (const QZX_logging_all& thrown) {
    return std::string("thrown: ") + thrown.get_message();
  }
}

struct Complaints : qz_LOG_LineErrorHandler {
  void TakeLineError(const qz_LOG_LineError& error) override {
    ADD_FAILURE() << error.text << ": " << std::string(error.source, error.source_length);
  }
};

class JournalRoundTrip : public SettingsTest {
 protected:
  JournalRoundTrip() : journald_("qzlogtest" + std::to_string(::getpid())) {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", definitions().bytes()).c_str());
    settings_.journal_namespace = journald_.name();
    settings_.product = "test";
    settings_.longest_wait_milliseconds = 60'000;
  }

  Journald journald_;
  qz_LOG_JournalSinkSettings settings_;
};

TEST_F(JournalRoundTrip, RandomEntries_ComeBackEqual) {
  if (!journald_.reason().empty()) GTEST_SKIP() << journald_.reason();
  const int count = rounds(20'000);
  SeededRandom random;
  const std::uint32_t seed = random.seed();
  {
    RandomNumbers written(seed);
    HostileEntries entries(written);
    qz_LOG_JournalSink sink(settings_);
    for (int i = 0; i < count; ++i) ASSERT_TRUE(sink.Write(entries.entry())) << i;
    EXPECT_EQ(sink.Close(1000), 0U);
  }
  journald_.sync();
  RandomNumbers expected(seed);
  HostileEntries entries(expected);
  Complaints complaints;
  qzlog_tool::JournalLog log({journald_.name()});
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(log, "journal", &complaints);
  qz_LOG_EntryLine line;
  int seen = 0;
  while (reader.Next(line) && !HasFailure()) {
    ASSERT_LT(seen, count);
    const qz_LOG_LogEntry entry = entries.entry();
    ++seen;
    EXPECT_EQ(Contents::of(line.GetEntry()), Contents::of(entry));
    EXPECT_EQ(message_of(line.GetEntry()), message_of(entry));
    EXPECT_EQ(line.GetSeq(), static_cast<unsigned>(seen));
  }
  EXPECT_EQ(seen, count);
}

/// Fields for searching, and the message.
TEST_F(JournalRoundTrip, Fields_AreFoundByJournalctl) {
  if (!journald_.reason().empty()) GTEST_SKIP() << journald_.reason();
  qz_LOG_JournalSink sink(settings_);
  for (unsigned number = 1; number <= 3; ++number) {
    qz_LOG_LogEntry entry(kEvent, 7);
    entry.AddAttrib4u("TypeUInt4", number);
    entry.AddAttribStr("TypeChar32", "b");
    entry.AddAttribMBStr("TypeMBChar2K", "a");
    EXPECT_TRUE(sink.Write(entry));
  }
  journald_.sync();
  const auto result = qzlog_tool::run_program({"journalctl", "--namespace=" + journald_.name(), "--quiet",
                                               "--output=cat", "--priority=3", "QZ_TYPEUINT4=2", "QZLOG_ID=1001"});
  EXPECT_EQ(result.output, "a of 2, b\n");
}

TEST_F(JournalRoundTrip, JournaldThatIsKilledAndStarted_IsFoundAgain) {
  if (!journald_.reason().empty()) GTEST_SKIP() << journald_.reason();
  qz_LOG_JournalSink sink(settings_);
  unsigned long long written = 0;
  for (int round = 0; round < 3; ++round) {
    const auto write = [&](unsigned number) {
      qz_LOG_LogEntry entry(kEvent, 3);
      entry.AddAttrib4u("TypeUInt4", number);
      return sink.Write(entry);
    };
    for (unsigned i = 0; i < 100; ++i) written += write(i) ? 1U : 0U;
    journald_.sync();
    journald_.stop();
    EXPECT_FALSE(write(1000));
    EXPECT_FALSE(write(1001));
    journald_.start();
    EXPECT_TRUE(write(2000));
    ++written;
  }
  journald_.sync();
  qzlog_tool::JournalLog log({journald_.name()});
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(log, "journal");
  qz_LOG_EntryLine line;
  unsigned long long entries = 0;
  unsigned long long lost = 0;
  unsigned long long seq = 0;
  while (reader.Next(line)) {
    EXPECT_EQ(line.GetSeq(), ++seq);
    if (line.IsLoss()) lost += line.GetLost(0).count;
    if (!line.IsLoss()) ++entries;
  }
  EXPECT_EQ(entries, written);
  EXPECT_EQ(lost, 6U);
  EXPECT_EQ(sink.GetCounts().failed, 6U);
}

}  // namespace
