// small_stacks NAME: uses the library in a thread that has little stack. Exit status 0 when it came out of it, with
// what it was to do or with an exception; a stack that is too small ends the process.
#include <pthread.h>
#include <qzlog.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "sample_entries.h"
#include "tests/faults/scenarios/operations.h"

namespace {

constexpr std::size_t kKiB = 1024;
constexpr unsigned kEventId = 1;

SeenText g_seen;
std::vector<qz_LOG_LogEntry> g_entries;

void load_samples() {
  qz_LOG_LogConfig::SetDefinitionPath("storage.ldf");
  g_entries = all_samples();
}

void filter_all() {
  qz_LOG_LogConfig::SetConfigurationSource("log.conf", QZ_CONFIGURATION_FILE);
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "storage", false, false};
  unsigned passed = 0;
  for (const qz_LOG_LogEntry& entry : g_entries) passed += filter.check_entry(entry) ? 1 : 0;
  if (passed == 0 || passed == g_entries.size()) throw StatedFailure{"the filter decides nothing"};
}

void read_all() {
  const qz_LOG_LogEntry& disk = g_entries[3];
  qz_AttributeType type{};
  if (std::strcmp(disk.GetAttribStr("Serial"), "WX41A7731") != 0 || disk.GetAttrib1u("Slot") != 7 ||
      disk.CheckAttribute("Shelf", type) != 0) {
    throw StatedFailure{"an attribute is not what was added"};
  }
  unsigned short year = 0;
  unsigned short month = 0;
  unsigned short day = 0;
  g_entries[16].GetEventLocalDate(year, month, day);
  if (year != 2026) throw StatedFailure{"the time is not what was set"};
}

void see_all(void (*see)(SeenText&)) {
  g_seen.clear();
  see(g_seen);
}

// An exception is all right: a text may be beyond what the library takes.
void render_event(const char* definitions) {
  qz_LOG_LogConfig::SetDefinitionPath(definitions);
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    try {
      qz_LOG_LogEntry entry(kEventId, 3);
      entry.AddAttrib4("Count", 1);
      if (entry.FormatMessage().empty()) throw StatedFailure{"an empty message"};
    } catch (const qz_EXCEPTION_base& error) {
      std::printf("%s\n", error.get_message() == nullptr ? "no memory" : error.get_message());
    }
  }
}

struct Case {
  const char* name;
  std::size_t stack_size;
  void (*prepare)();  // with all the stack there is
  void (*run)();
};

const Case kCases[] = {
    {"filter", 64 * kKiB, load_samples, filter_all},
    {"reads", 64 * kKiB, load_samples, read_all},
    {"adds", 128 * kKiB, nullptr, [] { see_all(see_entries); }},
    {"narrow", 256 * kKiB, nullptr, [] { see_all(see_narrow_messages); }},
    {"icu", 256 * kKiB, nullptr, [] { see_all(see_icu_messages); }},
    {"buffers", 256 * kKiB, nullptr, [] { see_all(see_buffer_messages); }},
    {"catalog", 256 * kKiB, nullptr, [] { see_all(see_catalog_messages); }},
    {"code-pages", 256 * kKiB, nullptr, [] { see_all(see_code_pages); }},
    {"debug-log", 256 * kKiB, nullptr, [] { see_all(see_messages_with_debug_log); }},
    {"deep-template", 256 * kKiB, nullptr, [] { render_event("deep.ldf"); }},
    {"long-template", 256 * kKiB, nullptr, [] { render_event("long.ldf"); }},
    {"hidden-braces", 256 * kKiB, nullptr, [] { render_event("hidden.ldf"); }},
    {"long-hidden-braces", 256 * kKiB, nullptr, [] { render_event("long_hidden.ldf"); }},
    {"open-braces", 256 * kKiB, nullptr, [] { render_event("open.ldf"); }},
};

// Null, or what was wrong.
void* run_case(void* argument) {
  try {
    static_cast<const Case*>(argument)->run();
    return nullptr;
  } catch (const StatedFailure& failure) {
    return const_cast<char*>(failure.text);
  } catch (const qz_EXCEPTION_base& error) {
    std::fprintf(stderr, "%s\n", error.get_message() == nullptr ? "no memory" : error.get_message());
    return const_cast<char*>("an exception");
  }
}

// Null, or what was wrong.
const char* run_in_small_thread(const Case& chosen) {
  pthread_attr_t attributes;
  pthread_t thread{};
  void* result = nullptr;
  pthread_attr_init(&attributes);
  if (pthread_attr_setstacksize(&attributes, chosen.stack_size) != 0 ||
      pthread_create(&thread, &attributes, run_case, const_cast<Case*>(&chosen)) != 0 ||
      pthread_join(thread, &result) != 0) {
    return "no such thread";
  }
  return static_cast<const char*>(result);
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  for (const Case& one : kCases) {
    if (argc != 2) {
      std::puts(one.name);
    } else if (std::strcmp(one.name, argv[1]) == 0) {
      if (one.prepare != nullptr) one.prepare();
      const char* const wrong = run_in_small_thread(one);
      if (wrong != nullptr) std::fprintf(stderr, "%s\n", wrong);
      return wrong == nullptr ? 0 : 1;
    }
  }
  return argc == 2 ? 2 : 0;
}
