// Every allocation of making, filling and rendering an entry fails once, ICU's own among them: the message is right or
// QZX_memory_alloc is thrown, and with memory at hand the same message is right again.
#include "tests/support/malloc_failure.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <ostream>
#include <string>
#include <thread>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_exception.h"
#include "tests/support/ldf_file.h"
#include "tests/support/temp_dir.h"

namespace qz_test {
namespace {

constexpr unsigned kTooMany = 100'000;
constexpr const char* kLongText = "a text that is longer than any small string and any string on ICU's stack";

enum EventId : unsigned { kPlain = 1, kFormats, kDates, kWhole, kTexts, kShort };

std::vector<LdfEntry> events() {
  const std::vector<LdfAttribute> attributes = {{"Count", TypeSInt4},
                                                {"Share", TypeFloat},
                                                {"When", TypeTimestamp},
                                                {"Name", TypeMBChar256},
                                                {"Host", TypeChar256}};
  const auto event = [&](EventId id, const char* text) {
    return LdfEntry{.id = id, .message_id = "greeting", .message_text = text, .attributes = attributes};
  };
  return {event(kPlain, "The host %s%Host% has %d%Count% names, among them %s%Name%, and many more%_%TIMESTAMP%"),
          event(kFormats, "%f%Share% %C%Count% %P%Share% %d%Count%"),
          event(kDates, "%D%When% %T%When% of %s%Host%"),
          event(kWhole,
                "{0,plural,one{#}other{# names of the longest kind}} {1,date,full} {0,spellout} {2} "
                "{3,select,other{nothing else than this}} %d%Count% %D%When% %s%Name% %s%Host%"),
          event(kTexts, "%s%Name% %s%Host% %_%TIMESTAMP%"),
          event(kShort, "short%_%TIMESTAMP%")};
}

void fill(qz_LOG_LogEntry& entry, const char* name) {
  entry.AddAttrib4("Count", -1234567);
  entry.AddAttribFloat8("Share", 98.5);
  qz_Time time;
  time.set_to_string_value("2026-11-21 08:15:30");
  entry.AddAttribTime("When", time);
  entry.AddAttribMBStr("Name", name);
  entry.AddAttribStr("Host", kLongText);
}

void whole_message(std::string& out, EventId id, const char* name = kLongText) {
  qz_LOG_LogEntry entry(id, 3);
  fill(entry, name);
  out += entry.FormatMessage();
}

void message_in_buffer(std::string& out, EventId id) {
  qz_LOG_LogEntry entry(id, 3);
  fill(entry, kLongText);
  char buffer[1025];
  out += entry.GetReadableMessage(buffer, 1024, false, 0);
}

void short_form(std::string& out, EventId id) {
  qz_LOG_LogEntry entry(id, 3);
  fill(entry, kLongText);
  out += entry.GetReadableMessage(false, 0);
}

/// The conversions say no more than that they failed.
void convert(std::string& out, const char* text, const char* code_page) {
  char utf8[256];
  unsigned size = 255;
  if (qz_LOG_LogEntry::ConvertToUTF8(text, utf8, size, code_page) == 0) throw QZX_memory_alloc();
  char back[256];
  size = 255;
  if (qz_LOG_LogEntry::ConvertFromUTF8(utf8, back, size, code_page) == 0) throw QZX_memory_alloc();
  out += utf8;
  out += back;
}

struct Scenario {
  const char* name;
  bool icu;
  const char* code_page;
  const char* catalog;            ///< null: none
  void (*run)(std::string& out);  ///< appends what it finds; has room without an allocation
};

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) { return out << scenario.name; }

constexpr const char* kSjisName = "\x8A\xBF\x8E\x9A, \x8A\xBF\x8E\x9A and a text that is longer than any small string";

const Scenario kScenarios[] = {
    {"Narrow", false, "", nullptr,
     [](std::string& out) {
       whole_message(out, kFormats);
       whole_message(out, kDates);
     }},
    {"NarrowTexts", false, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kPlain); }},
    {"Short", true, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kShort); }},
    {"Plain", true, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kPlain); }},
    {"Formats", true, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kFormats); }},
    {"Dates", true, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kDates); }},
    {"WholePattern", true, "UTF-8", nullptr, [](std::string& out) { whole_message(out, kWhole); }},
    {"DefaultCodePage", true, "", nullptr, [](std::string& out) { whole_message(out, kTexts, "\xC3\xA9 and so on"); }},
    {"Latin", true, "ISO-8859-1", nullptr, [](std::string& out) { whole_message(out, kTexts, "\xE9"); }},
    {"ShiftJis", true, "Shift_JIS", nullptr, [](std::string& out) { whole_message(out, kTexts, kSjisName); }},
    {"ShiftJisPattern", true, "Shift_JIS", nullptr, [](std::string& out) { whole_message(out, kWhole, kSjisName); }},
    {"Stateful", true, "ISO-2022-JP", nullptr,
     [](std::string& out) { whole_message(out, kTexts, "\x1B$B4A\x1B(B and so on"); }},
    {"Buffer", true, "UTF-8", nullptr, [](std::string& out) { message_in_buffer(out, kPlain); }},
    {"BufferFormats", true, "UTF-8", nullptr,
     [](std::string& out) {
       message_in_buffer(out, kFormats);
       short_form(out, kFormats);
     }},
    {"BufferShiftJis", true, "Shift_JIS", nullptr, [](std::string& out) { message_in_buffer(out, kPlain); }},
    {"NarrowBuffer", false, "", nullptr, [](std::string& out) { message_in_buffer(out, kPlain); }},
    {"Catalog", true, "UTF-8", QZLOG_TEST_CATALOGS "/whole", [](std::string& out) { whole_message(out, kTexts); }},
    {"Conversions", true, "UTF-8", nullptr,
     [](std::string& out) {
       convert(out, kSjisName, "Shift_JIS");
       convert(out, "a", "UTF-8");
     }},
};

// ---- one attempt, and how it ends ----

// ICU crashes at some allocations that it does not check, waits for itself, or remembers for the life of the process
// what it made without memory, as the C library does with the time zone: that they are broken is seen by asking them
// without the library.
enum Ending : int {
  kDone,
  kNoneLeft,
  kIcuCrashed,
  kIcuHung,
  kBrokenOutside,
  kWrongMessage,
  kOtherException,
  kWrongAfterwards,
  kCrash,
  kEndings
};

constexpr const char* kEndingNames[] = {"right or QZX_memory_alloc",
                                        "none left",
                                        "crashes inside ICU",
                                        "hangs inside ICU",
                                        "broken outside the library",
                                        "wrong message",
                                        "other exception",
                                        "wrong afterwards",
                                        "crash"};

/// Shared with the processes that attempts are made in.
struct Shared {
  char expected[4096];
  char outside_expected[4096];
  char found[4096];
  char place[256];
  unsigned nth;
};

Shared* shared = nullptr;

void keep(char (&target)[4096], const std::string& text) { std::snprintf(target, sizeof(target), "%s", text.c_str()); }

/// What ICU and the C library give for the same values and code pages.
std::string ask_without_library() {
  std::string answer = std::string(ucnv_getDefaultName()) + uloc_getDefault();
  const std::time_t moment = 1795248930;
  std::tm local = {};
  localtime_r(&moment, &local);
  answer += std::to_string(local.tm_gmtoff);
  for (const char* const pattern :
       {"{0} {0,number} {0,number,##########} {0,number,currency} {0,number,percent} {0,spellout}",
        "{1,date} {1,time} {1,date,full} {1,time,full}", "{0,plural,one{#}other{# names}} {2,select,other{x}}"}) {
    const icu::Formattable values[] = {-1234567, icu::Formattable(1795248930000.0, icu::Formattable::kIsDate),
                                       icu::UnicodeString(u"text")};
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessageFormat format(pattern, icu::Locale::getDefault(), status);
    icu::UnicodeString text;
    icu::FieldPosition position;
    format.format(values, 3, text, position, status);
    text.toUTF8String(answer);
    answer += u_errorName(status);
  }
  for (const char* const code_page : {"Shift_JIS", "ISO-2022-JP", "ISO-8859-1", "UTF-8"}) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_close(ucnv_open(code_page, &status));
    answer += u_errorName(status);
  }
  return answer;
}

/// The message with memory at hand, which has to be the expected one.
bool renders_right(const Scenario& scenario) {
  try {
    std::string message;
    scenario.run(message);
    keep(shared->found, message);
    return message == shared->expected;
  } catch (const qz_EXCEPTION_base& error) {
    keep(shared->found,
         std::string("exception ") + (error.get_message() != nullptr ? error.get_message() : "of memory"));
    return false;
  }
}

Ending unless_broken_outside(Ending ending) {
  return ask_without_library() == shared->outside_expected ? ending : kBrokenOutside;
}

Ending attempt(const Scenario& scenario, unsigned nth, MallocFailure::Reach reach) {
  std::string message;
  message.reserve(sizeof(shared->expected));
  bool threw = false;
  {
    const MallocFailure failure(nth, reach);
    try {
      scenario.run(message);
    } catch (const QZX_memory_alloc&) {
      threw = true;
    } catch (const qz_EXCEPTION_base& error) {
      keep(shared->found, error.get_message() != nullptr ? error.get_message() : "");
      return kOtherException;
    } catch (const std::bad_alloc&) {
      keep(shared->found, "std::bad_alloc");
      return kOtherException;
    }
  }
  if (!threw && message != shared->expected) {
    keep(shared->found, message);
    return unless_broken_outside(kWrongMessage);
  }
  if (!MallocFailure::happened()) return threw ? kOtherException : kNoneLeft;
  return renders_right(scenario) ? kDone : unless_broken_outside(kWrongAfterwards);
}

/// The C library, and the page of the system's own through which it calls the system on some hosts.
bool is_of_the_system(const char* file) {
  return std::strstr(file, "libc.so") != nullptr || std::strstr(file, "linux-gate.so") != nullptr ||
         std::strstr(file, "linux-vdso") != nullptr;
}

/// The innermost library in which the process crashed or hung, past the system's, and the function there.
void on_crash(int number) {
  void* frames[64];
  const int count = backtrace(frames, 64);
  // The first two are the handler and the signal's return.
  for (int i = 2; i < count; ++i) {
    Dl_info info = {};
    if (dladdr(frames[i], &info) == 0 || is_of_the_system(info.dli_fname)) continue;
    std::snprintf(shared->place, sizeof(shared->place), "%s",
                  info.dli_sname != nullptr ? info.dli_sname : info.dli_fname);
    const bool in_icu = std::strstr(info.dli_fname, "libicu") != nullptr;
    _exit(!in_icu ? kCrash : number == SIGALRM ? kIcuHung : kIcuCrashed);
  }
  _exit(kCrash);
}

void prepare(const Scenario& scenario, const std::string& definitions) {
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(definitions.c_str());
  qz_LOG_LogConfig::SetICUEnabled(scenario.icu);
  qz_LOG_LogConfig::SetCodePage(scenario.code_page);
  if (scenario.icu) qz_LOG_LogConfig::SetMessageCatalogPath(scenario.catalog);
  // Reading a definition is not what is tried here.
  for (unsigned id = kPlain; id <= kShort; ++id) const qz_LOG_LogEntry entry(id, 0);
}

/// The letter by which the system tells that a process sleeps, not that it waits for its turn.
bool is_asleep(pid_t process) {
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string field;
  return stat >> field && stat >> field && stat >> field && field == "S";
}

/// Waits for a process, which has nothing to sleep for when it `never_sleeps`.
int status_of(pid_t child, bool never_sleeps) {
  constexpr int kAsleepOften = 100;
  int status = 0;
  if (!never_sleeps) return waitpid(child, &status, 0) == child ? status : -1;
  for (int asleep = 0; waitpid(child, &status, WNOHANG) == 0; usleep(500)) {
    asleep = is_asleep(child) ? asleep + 1 : 0;
    if (asleep == kAsleepOften) kill(child, SIGALRM);
  }
  return status;
}

/// In a process of its own.
template <typename Body>
Ending in_child(bool never_sleeps, Body&& body) {
  const pid_t child = fork();
  if (child == 0) {
    void* frame = nullptr;
    backtrace(&frame, 1);  // loads what it needs
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM}) std::signal(number, on_crash);
    alarm(never_sleeps ? 0 : 300);
    try {
      _exit(body());
    } catch (...) {
      _exit(kOtherException);
    }
  }
  const int status = status_of(child, never_sleeps);
  if (WIFEXITED(status)) return static_cast<Ending>(WEXITSTATUS(status));
  std::snprintf(shared->place, sizeof(shared->place), "signal %d", WTERMSIG(status));
  return kCrash;
}

class MallocFailures : public testing::TestWithParam<Scenario> {
 protected:
  static void SetUpTestSuite() {
    setenv("TZ", "Asia/Kathmandu", 1);
    setenv("LC_ALL", "en_US", 1);
    shared =
        static_cast<Shared*>(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(shared, MAP_FAILED);
  }
  static void TearDownTestSuite() { munmap(shared, sizeof(Shared)); }

  void SetUp() override {
#ifdef QZLOG_SANITIZED
    GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
    definitions_ = folder_.write("std.ldf", LdfFile{.tag = "1.0", .entries = events()}.bytes());
    std::memset(shared, 0, sizeof(*shared));
    const Ending ending = in_child(true, [&] {
      prepare(GetParam(), definitions_);
      std::string message;
      GetParam().run(message);
      keep(shared->expected, message);
      keep(shared->outside_expected, ask_without_library());
      return kDone;
    });
    ASSERT_EQ(ending, kDone);
  }

  void count(Ending ending, unsigned nth, const char* how) {
    ++endings_[ending];
    if (ending == kIcuCrashed || ending == kIcuHung) ++places_[shared->place];
    if (ending <= kBrokenOutside) return;
    ADD_FAILURE() << kEndingNames[ending] << " at allocation " << nth << " " << how << "\n  found    \""
                  << shared->found << "\"\n  expected \"" << shared->expected << "\" " << shared->place;
  }
  void print(const char* how) const {
    std::printf("%s, %s:", GetParam().name, how);
    for (int i = 0; i < kEndings; ++i) {
      if (endings_[i] != 0) std::printf(" %u %s", endings_[i], kEndingNames[i]);
    }
    for (const auto& [place, times] : places_) std::printf("\n  %u x %s", times, place.c_str());
    std::printf("\n");
  }

  /// All in one process, in which ICU was used before; each in a thread of its own with nothing of the library's kept.
  Ending warmed(unsigned nth, MallocFailure::Reach reach) {
    prepare(GetParam(), definitions_);
    Ending ending = kNoneLeft;
    std::thread([&] { ending = attempt(GetParam(), nth, reach); }).join();
    if (ending == kDone && !renders_right(GetParam())) ending = kWrongAfterwards;
    return ending;
  }

  /// One after the other in one process, until something goes wrong; then in another one.
  template <typename TryNth>
  void fail_each(bool never_sleeps, TryNth&& try_nth) {
    for (const auto reach : {MallocFailure::kOnce, MallocFailure::kFromThenOn}) {
      Ending ending = kDone;
      for (unsigned first = 1; ending != kNoneLeft && first < kTooMany; first = shared->nth + 1) {
        ending = in_child(never_sleeps, [&] {
          prepare(GetParam(), definitions_);
          if (!renders_right(GetParam())) return kWrongMessage;
          for (shared->nth = first;; ++shared->nth) {
            const Ending one = try_nth(shared->nth, reach);
            if (one != kDone) return one;
          }
        });
        endings_[kDone] += shared->nth - first;
        EXPECT_NE(ending, kBrokenOutside) << "at allocation " << shared->nth;
        EXPECT_NE(ending, kIcuHung) << "at allocation " << shared->nth;
        count(ending, shared->nth, reach == MallocFailure::kOnce ? "once" : "from then on");
      }
    }
  }

  TempDir folder_;
  std::string definitions_;
  unsigned endings_[kEndings] = {};
  std::map<std::string, unsigned> places_;
};

TEST_P(MallocFailures, InAWarmedProcess_RightOrMemoryAllocAndRightAfterwards) {
  fail_each(false, [&](unsigned nth, MallocFailure::Reach reach) { return warmed(nth, reach); });
  print("warmed");
}

TEST_P(MallocFailures, WithEverythingKept_RightOrMemoryAllocAndRightAfterwards) {
  fail_each(true, [](unsigned nth, MallocFailure::Reach reach) {
    // ICU goes on making what a formatter needs while that formats for the first few times.
    for (int i = 0; i < 8; ++i) {
      if (!renders_right(GetParam())) return kWrongAfterwards;
    }
    return attempt(GetParam(), nth, reach);
  });
  print("kept");
}

TEST_P(MallocFailures, InAFreshProcess_RightOrMemoryAllocAndRightAfterwards) {
  Ending ending = kDone;
  for (unsigned nth = 1; ending != kNoneLeft && nth < kTooMany; ++nth) {
    ending = in_child(true, [&] {
      prepare(GetParam(), definitions_);
      return attempt(GetParam(), nth, MallocFailure::kOnce);
    });
    count(ending, nth, "once");
  }
  print("fresh");
}

INSTANTIATE_TEST_SUITE_P(Scenarios, MallocFailures, testing::ValuesIn(kScenarios),
                         [](const testing::TestParamInfo<Scenario>& tested) { return tested.param.name; });

}  // namespace
}  // namespace qz_test
