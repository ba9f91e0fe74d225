#ifndef QZLOG_TESTS_CONFIG_ENTRY_FILT_FIXTURE_H
#define QZLOG_TESTS_CONFIG_ENTRY_FILT_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "qzlog/entry_filt.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qz_test {

constexpr unsigned kDebugBit = 0x4000000U;

/// The entry IDs of the tests; each has the property mask of the same name.
constexpr unsigned kOrdinaryId = 1001;
constexpr unsigned kDebugId = 1002;
constexpr unsigned kNoMaskId = 1003;
constexpr unsigned kOnlyDebugId = 1004;
constexpr unsigned kOrdinaryMask = 0x21U;
constexpr unsigned kDebugMask = kDebugBit | 0x21U;

inline _qz_LOG_entry_filter make_filter(const char* section = "app") {
  return {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, section, false, false};
}

/// What a filter's callback was given, and what it answers.
struct CallbackCalls {
  bool answer = true;
  int count = 0;
  unsigned entry_id = 0;
  unsigned property_mask = 0;
  unsigned log_level = 0;
  const qz_LOG_LogEntry* entry = nullptr;
};

inline bool record_call(unsigned entry_id, unsigned property_mask, unsigned log_level, const qz_LOG_LogEntry& entry,
                        void* user_data) {
  auto& calls = *static_cast<CallbackCalls*>(user_data);
  ++calls.count;
  calls.entry_id = entry_id;
  calls.property_mask = property_mask;
  calls.log_level = log_level;
  calls.entry = &entry;
  return calls.answer;
}

/// Entries of the four IDs can be made; no configuration source is set at first.
class EntryFilterTest : public SettingsTest {
 protected:
  EntryFilterTest() {
    const LdfFile file{.entries = {{.id = kOrdinaryId, .mask = kOrdinaryMask},
                                   {.id = kDebugId, .mask = kDebugMask},
                                   {.id = kNoMaskId, .mask = 0},
                                   {.id = kOnlyDebugId, .mask = kDebugBit}}};
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  }

  /// Makes `lines` the configuration source; the empty line at the end belongs to the format.
  void configure(const std::string& lines) {
    std::filesystem::remove(folder_.path("qz.conf"));  // some file systems flush a file that is replaced
    qz_LOG_LogConfig::SetConfigurationSource(folder_.write("qz.conf", lines + "\n\n").c_str(), QZ_CONFIGURATION_FILE);
  }
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_CONFIG_ENTRY_FILT_FIXTURE_H
