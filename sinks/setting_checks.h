#ifndef QZLOG_SINKS_SETTING_CHECKS_H
#define QZLOG_SINKS_SETTING_CHECKS_H

#include <new>
#include <string>

#include "qzlog/qz_exception.h"

namespace qzlog {

/// Throws QZX_logging_illegal_argument "NAME: TEXT".
[[noreturn]] inline void refuse_setting(const char* name, const std::string& text) {
  throw QZX_logging_illegal_argument((std::string(name) + ": " + text).c_str(), 0);
}

/// Throws the same "NAME: VALUE is not from LEAST to MOST" unless it is.
inline void require_range(const char* name, unsigned long long value, unsigned long long least,
                          unsigned long long most) {
  if (value >= least && value <= most) return;
  refuse_setting(name, std::to_string(value) + " is not from " + std::to_string(least) + " to " + std::to_string(most));
}

/// What `make` returns; std::bad_alloc becomes QZX_memory_alloc.
template <typename Make>
decltype(auto) with_memory(Make&& make) {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

}  // namespace qzlog

#endif  // QZLOG_SINKS_SETTING_CHECKS_H
