#include "sinks/writer_name.h"

#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ctime>

#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constinit std::atomic<unsigned long long> latest_start{0};

unsigned long long new_start() {
  const std::timespec now = SinkClock::now();
  unsigned long long start =
      static_cast<unsigned long long>(now.tv_sec) * 1'000'000'000 + static_cast<unsigned long long>(now.tv_nsec);
  unsigned long long latest = latest_start.load();
  do {
    if (start <= latest) start = latest + 1;
  } while (!latest_start.compare_exchange_weak(latest, start));
  return start;
}

}  // namespace

std::string host_name() {
  char name[65] = {};
  if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
  for (char* character = name; *character != '\0'; ++character) {
    const bool is_plain = (*character >= 'a' && *character <= 'z') || (*character >= 'A' && *character <= 'Z') ||
                          (*character >= '0' && *character <= '9') || std::strchr("-._", *character) != nullptr;
    if (!is_plain) *character = '_';
  }
  return name;
}

std::string new_writer_name() {
  return host_name() + '/' + std::to_string(getpid()) + '/' + std::to_string(new_start());
}

unsigned long long writer_start(const std::string& writer) { return std::stoull(writer.substr(writer.rfind('/') + 1)); }

}  // namespace qzlog
