#ifndef QZLOG_TESTS_SUPPORT_SETTINGS_TEST_H
#define QZLOG_TESTS_SUPPORT_SETTINGS_TEST_H

#include <gtest/gtest.h>

#include "qzlog/debug_log.h"
#include "qzlog/logcfg.h"
#include "tests/support/temp_dir.h"

namespace qz_test {

/// The process-wide settings back at what they are when the library is loaded, as far as the setters reach: a
/// definition path keeps its last text.
inline void reset_settings() {
  EnableDebugLog(0);
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  qz_LOG_LogConfig::SetCodePage("");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_REFUSE);
  qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_CUT);
  qz_LOG_LogConfig::SetSynchronizationLevel(QZ_SYNCHRONIZATION_FLUSH);
  qz_LOG_LogConfig::EnableCountConfig(false);
}

/// Tests that change settings: they start from the initial ones, leave these behind and have a folder of their own.
class SettingsTest : public testing::Test {
 protected:
  SettingsTest() { reset_settings(); }
  ~SettingsTest() override { reset_settings(); }

  TempDir folder_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SETTINGS_TEST_H
