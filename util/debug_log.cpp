#include "qzlog/debug_log.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "foundation/fork_gate.h"
#include "foundation/plain_name.h"
#include "util/debug_record.h"

using namespace qzlog;

unsigned debug_log_level = 0;
QZLOG_PLAIN_NAME(debug_log_level);

namespace {

constexpr const char* kDebugLogFile = "zrk_debug.log";
constexpr unsigned kMaxLevel = 9;

void write_record(std::FILE* file, const char* format, std::va_list arguments) {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  localtime_r(&now, &local);
  char time_text[20] = "";
  std::strftime(time_text, sizeof(time_text), "%Y/%m/%d %H:%M:%S", &local);
  // The thread value is an address-sized number; the record shows its low 32 bits, as it always has.
  std::fprintf(file, "%s(pid=%d)(tid=%d):", time_text, getpid(), static_cast<int>(pthread_self()));
  std::vfprintf(file, format, arguments);
}

}  // namespace

void LogDebugMessage(unsigned level, const char* format, ...) {
  if (!debug_log_wants(level)) return;
  // The C library locks its time zone; and a process that is forked with a record half written would write it too.
  const ForkDelay fork_delay;
  std::FILE* file = std::fopen(kDebugLogFile, "a+e");
  if (file == nullptr) return;
  std::va_list arguments;
  va_start(arguments, format);
  write_record(file, format, arguments);
  va_end(arguments);
  std::fclose(file);
}

void EnableDebugLog(int level) {
  if (static_cast<unsigned>(level) <= kMaxLevel) store_word(debug_log_level, static_cast<unsigned>(level));
}

unsigned GetDebugLogLevel() { return load_word(debug_log_level); }

const char* GetZRKVersion() { return "1.1.1.0000"; }
