#include "tools/ship/moment_text.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace qzlog_tool {

std::string moment_text(std::chrono::system_clock::time_point moment) {
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(moment.time_since_epoch()).count();
  const std::time_t seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts = {};
  ::gmtime_r(&seconds, &parts);
  std::array<char, 32> date = {};
  std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
  std::array<char, 48> text = {};
  std::snprintf(text.data(), text.size(), "%s.%03dZ", date.data(), static_cast<int>(milliseconds % 1000));
  return text.data();
}

}  // namespace qzlog_tool
