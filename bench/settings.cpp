#include "bench/settings.h"

#include <mutex>
#include <optional>

#include <qzlog.h>

namespace qzlog_bench {
namespace {

std::mutex settings_mutex;
std::optional<Settings> settings_in_force;  // guarded by settings_mutex

const char* path_or_null(const std::string& path) { return path.empty() ? nullptr : path.c_str(); }

void set_definitions(const std::string& path) {
  if (qz_LOG_LogConfig::GetDefinitionPath() == path) return;
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(path.c_str());
}

}  // namespace

std::string built_file(const std::string& name) { return std::string(QZLOG_BENCH_DATA) + "/" + name; }

std::string compiled_events(unsigned /*count*/) { return built_file("events.ldf"); }

void apply(const Settings& settings) {
  const std::lock_guard lock(settings_mutex);
  if (settings_in_force == settings) return;
  settings_in_force.reset();
  // A catalog can be set while ICU is on only, and follows the locale.
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  qz_LOG_LogConfig::SetLocale(settings.locale);
  qz_LOG_LogConfig::SetMessageCatalogPath(path_or_null(settings.catalog));
  qz_LOG_LogConfig::SetConfigurationSource(path_or_null(settings.configuration), QZ_CONFIGURATION_FILE);
  set_definitions(settings.definitions.path(settings.definitions.count));
  qz_LOG_LogConfig::SetICUEnabled(settings.icu);
  settings_in_force = settings;
}

}  // namespace qzlog_bench
