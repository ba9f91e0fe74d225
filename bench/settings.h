#ifndef QZLOG_BENCH_SETTINGS_H
#define QZLOG_BENCH_SETTINGS_H

#include <string>

#include "qzlog/qz_locale.h"

namespace qzlog_bench {

/// A file or folder that the build made for the benchmarks.
std::string built_file(const std::string& name);

/// A definition file, which need not exist before `path(count)` is called.
struct Definitions {
  std::string (*path)(unsigned count);
  unsigned count = 0;

  bool operator==(const Definitions&) const = default;
};

/// The file made of bench/events.yaml.
std::string compiled_events(unsigned count);

/// The library's process-wide settings that a case is measured under. Messages are always in UTF-8.
struct Settings {
  bool icu = false;
  qz_Locale locale = QZ_LOCALE_EN_US;
  Definitions definitions = {compiled_events};
  std::string catalog = {};        ///< a folder of resource bundles; empty: none
  std::string configuration = {};  ///< a configuration file; empty: none

  bool operator==(const Settings&) const = default;
};

inline Settings narrow_path() { return {}; }
inline Settings narrow_path_with(Definitions definitions) { return {.definitions = definitions}; }
inline Settings icu_path(qz_Locale locale = QZ_LOCALE_EN_US) { return {.icu = true, .locale = locale}; }

/// Puts the settings into force unless they are already.
void apply(const Settings& settings);

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_SETTINGS_H
