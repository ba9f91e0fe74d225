#ifndef QZLOG_TESTS_MESSAGE_MESSAGE_FIXTURE_H
#define QZLOG_TESTS_MESSAGE_MESSAGE_FIXTURE_H

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <string>
#include <vector>

#include "definitions/ldf_def.h"
#include "entry/logentry_i.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qz_test {

/// Every type under its full name ("TypeUInt4"), and texts under names outside ASCII.
std::vector<LdfAttribute> attributes_of_every_type();

icu::UnicodeString from_utf8(const std::string& text);
std::string to_utf8(const icu::UnicodeString& text);

/// What rendering depends on, with ICU's defaults fixed: converter UTF-8, locale en_US, and the zone of Nepal, also for
/// the C library. The end brings everything back to what a process starts with.
class RenderingSettings {
 public:
  RenderingSettings();
  ~RenderingSettings();
  RenderingSettings(const RenderingSettings&) = delete;
  RenderingSettings& operator=(const RenderingSettings&) = delete;

  /// Replaces all definitions by these.
  void load(const std::vector<LdfEntry>& entries, const std::vector<LdfAttribute>& globals = {}) const;
  const TempDir& folder() const { return folder_; }

  static void set_icu_locale(const char* name);
  static void set_icu_zone(const char* id);

 private:
  TempDir folder_;
  TimeZone zone_;
  const icu::Locale previous_locale_;
  const std::unique_ptr<icu::TimeZone> previous_zone_;
};

/// An entry with an attribute of every type, rendered with any template.
class MessageRendering {
 public:
  static constexpr unsigned kEntryId = 4711;

  MessageRendering();

  _qz_LOG_log_entry_imp& entry() { return *entry_; }
  _qz_LOG_log_definition& definition() { return definition_; }
  const RenderingSettings& settings() const { return settings_; }

  std::string narrow(const std::string& message_template);
  /// In UTF-8, as the template is.
  std::string icu(const std::string& message_template);

 private:
  RenderingSettings settings_;
  _qz_LOG_log_definition definition_;
  std::unique_ptr<_qz_LOG_log_entry_imp> entry_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_MESSAGE_FIXTURE_H
