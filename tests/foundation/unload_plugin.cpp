// A plug-in that logs: what a program opens and closes at run time, and with it the library.
#include <cstring>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"

/// Renders the message of an event 1 on both paths in the calling thread; whether both are `wanted`.
extern "C" __attribute__((visibility("default"))) bool render_one(const char* definitions, const char* wanted) {
  static const bool loaded = [&] {
    qz_LOG_LogConfig::SetDefinitionPath(definitions);
    return true;
  }();
  bool good = loaded;
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    const qz_LOG_LogEntry entry(1, 0);
    good = good && entry.FormatMessage() == wanted;
  }
  return good;
}
