#include "tests/faults/scenarios/operations.h"

#include <qzlog.h>

#include <cstring>

#include "sample_entries.h"

namespace {

constexpr const char* kDefinitions = "storage.ldf";
constexpr const char* kAuxiliary = "storage_aux.ldf";
constexpr const char* kCatalog = "./messages";
constexpr const char* kConfiguration = "log.conf";

// One by one: a list of them would take memory of its own.
qz_LOG_LogEntry (*const kSamples[])() = {
    volume_almost_full,   volume_mounted,  snapshot_policy_changed, disk_failed,      disk_temperature, clock_drift,
    controller_restarted, pool_rebalanced, replication_slow,        backup_planned,   backup_finished,  cloud_charges,
    setting_changed,      share_created,   operator_note,           update_installed, self_test_ended};

class SeeAttributes : public qz_LOG_AttributeVisitor {
 public:
  explicit SeeAttributes(SeenText& seen) : seen_(seen) {}
  void VisitBool(const char* name, qz_AttributeType, bool value) override { number(name, value ? 1 : 0); }
  void VisitUnsigned(const char* name, qz_AttributeType, unsigned value) override { number(name, value); }
  void VisitSigned(const char* name, qz_AttributeType, int value) override { number(name, value); }
  void VisitFloat(const char* name, qz_AttributeType, double value) override {
    number(name, static_cast<long long>(value * 1000));
  }
  void VisitText(const char* name, qz_AttributeType, const char* text, unsigned length) override {
    seen_.add(text);
    number(name, length);
  }
  void VisitTime(const char* name, qz_AttributeType, const qz_Time&) override { number(name, 0); }

 private:
  void number(const char* name, long long value) {
    seen_.add(" ");
    seen_.add(name);
    seen_.add_number(value);
  }

  SeenText& seen_;
};

void load_definitions() {
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  qz_LOG_LogConfig::SetDefinitionPath(kDefinitions);
}

void see_sample(SeenText& seen, const qz_LOG_LogEntry& entry) {
  SeeAttributes attributes(seen);
  seen.add_number(entry.GetEntryID());
  entry.VisitAttributes(attributes);
  seen.end_line();
}

void see_messages(SeenText& seen, qz_Locale locale) {
  qz_LOG_LogConfig::SetLocale(locale);
  for (const auto make : kSamples) {
    std::string message;
    make().FormatMessage(message);
    seen.add(message.c_str());
    seen.end_line();
  }
}

void see_converted(SeenText& seen, int (*convert)(const char*, char*, unsigned&, const char*), const char* text,
                   const char* code_page) {
  char target[256];
  unsigned size = sizeof target - 1;
  if (convert(text, target, size, code_page) != 1) throw StatedFailure{"a conversion returned 0"};
  seen.add(target);
  seen.add_number(size);
  seen.end_line();
}

void see_value(SeenText& seen, const char* section, const char* key) {
  unsigned value = 0;
  if (!qz_LOG_LogConfig::GetConfigurationIntegerValue(section, key, value))
    throw StatedFailure{"a lookup returned false"};
  seen.add(key);
  seen.add_number(value);
  seen.end_line();
}

// A source that is set outlives the operation, so that the others would ask it too.
class ConfigurationSource {
 public:
  ConfigurationSource() { qz_LOG_LogConfig::SetConfigurationSource(kConfiguration, QZ_CONFIGURATION_FILE); }
  ~ConfigurationSource() { qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE); }
  ConfigurationSource(const ConfigurationSource&) = delete;
  ConfigurationSource& operator=(const ConfigurationSource&) = delete;
};

}  // namespace

void see_entries(SeenText& seen) {
  load_definitions();
  qz_LOG_LogConfig::SetAuxDefinitionPath(kAuxiliary);
  for (const auto make : kSamples) see_sample(seen, make());
  const qz_LOG_LogEntry entry = disk_failed();
  const qz_LOG_LogEntry copy = entry;
  seen.add(copy.GetAttribStr("Serial"));
  seen.add_number(copy.GetAttrib1u("Slot"));
  seen.end_line();
}

void see_narrow_messages(SeenText& seen) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  load_definitions();
  qz_LOG_LogConfig::SetAuxDefinitionPath(kAuxiliary);
  see_messages(seen, QZ_LOCALE_EN_US);
}

void see_icu_messages(SeenText& seen) {
  qz_LOG_LogConfig::SetICUEnabled(true);
  load_definitions();
  see_messages(seen, QZ_LOCALE_EN_US);
  see_messages(seen, QZ_LOCALE_DE_DE);
}

void see_buffer_messages(SeenText& seen) {
  load_definitions();
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const auto make : kSamples) {
      char buffer[1024] = "";
      make().GetReadableMessage(buffer, sizeof buffer, false, 0);
      seen.add(buffer);
      seen.end_line();
    }
  }
}

void see_catalog_messages(SeenText& seen) {
  qz_LOG_LogConfig::SetICUEnabled(true);
  load_definitions();
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_EN_US);
  qz_LOG_LogConfig::SetMessageCatalogPath(kCatalog);
  see_messages(seen, QZ_LOCALE_DE_DE);
  see_messages(seen, QZ_LOCALE_JA_JP);
  see_messages(seen, QZ_LOCALE_EN_US);
}

void see_code_pages(SeenText& seen) {
  see_converted(seen, qz_LOG_LogEntry::ConvertToUTF8,
                "Gr\xfc\xdf"
                "e",
                "ISO-8859-1");
  see_converted(seen, qz_LOG_LogEntry::ConvertFromUTF8, "\xe8\xa8\xad\xe8\xa8\x88", "Shift_JIS");
  see_converted(seen, qz_LOG_LogEntry::ConvertFromUTF8, "caf\xc3\xa9", "IBM850");
}

void see_configuration(SeenText& seen) {
  const ConfigurationSource source;
  see_value(seen, "storage", "PropertyMask");
  see_value(seen, "storage", "LogLevelLow");
  see_value(seen, "global", "LogLevelLow");
  see_value(seen, "elsewhere", "LogLevelLow");
}

// Where a lookup states its failure the filter goes by its own values, which let everything through.
void see_filter(SeenText& seen) {
  load_definitions();
  const ConfigurationSource source;
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "storage", false, false};
  bool without_configuration = false;
  for (const auto make : kSamples) {
    const qz_LOG_LogEntry entry = make();
    const bool passes = filter.check_entry(entry);
    const bool is_to_pass = entry.GetLogLevel() >= 3 && (entry.GetPropertyMask() & 7U) != 0;
    without_configuration = without_configuration || (passes && !is_to_pass);
    seen.add_number(passes ? 1 : 0);
  }
  if (without_configuration) throw StatedFailure{"a lookup returned false"};
  seen.end_line();
}

void see_messages_with_debug_log(SeenText& seen) {
  struct Level {
    Level() { EnableDebugLog(3); }
    ~Level() { EnableDebugLog(0); }
  };
  const Level level;
  qz_LOG_LogConfig::SetICUEnabled(true);
  load_definitions();
  see_messages(seen, QZ_LOCALE_EN_US);
  see_sample(seen, disk_failed());
}
