#include "sinks/line_colour.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace qzlog {

bool shows_colour(int descriptor) {
  const char* const unwanted = std::getenv("NO_COLOR");
  if (unwanted != nullptr && *unwanted != '\0') return false;
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::strcmp(terminal, "dumb") != 0 && ::isatty(descriptor) == 1;
}

std::string_view colour_of_level(unsigned level) {
  if (level >= 8) return "\033[1;31m";
  if (level == 7) return "\033[31m";
  if (level >= 5) return "\033[33m";
  if (level == 4) return "\033[1m";
  return level >= 2 ? "" : "\033[2m";
}

std::string_view end_of_colour(unsigned level) { return colour_of_level(level).empty() ? "" : "\033[0m"; }

}  // namespace qzlog
