#include "qzlog/logcfg.h"

#include <sys/stat.h>

#include <atomic>
#include <memory>
#include <utility>

#include "config/configuration_source.h"
#include "config/logconf.h"
#include "definitions/definition_memory.h"
#include "definitions/ldf_load.h"
#include "definitions/prepared_texts.h"
#include "foundation/allocate.h"
#include "foundation/atomic_word.h"
#include "foundation/never_destroyed.h"
#include "foundation/owned_text.h"
#include "foundation/plain_name.h"
#include "message/logmsg.h"
#include "util/debug_record.h"

using namespace qzlog;

bool b_is_icu_enabled = true;
QZLOG_PLAIN_NAME(b_is_icu_enabled);
int action_on_exceed = QZ_ACTION_REFUSE;
QZLOG_PLAIN_NAME(action_on_exceed);

namespace {

constexpr const char* kSource = "logcfg";
constexpr unsigned kSynchronizationLevels = 5;
constexpr unsigned kActions = 2;

qz_SynchronizationLevelType synchronization_level = QZ_SYNCHRONIZATION_FLUSH;
bool count_config_enabled = false;
std::atomic<int> action_out_of_range{QZ_OUT_OF_RANGE_CUT};

// Guarded by qz_THREAD_global_lock, like the definition table and the catalog while they are loaded.
NeverDestroyed<OwnedText> definition_path;
NeverDestroyed<OwnedText> aux_definition_path;
NeverDestroyed<OwnedText> code_page;
NeverDestroyed<_qz_LOG_log_definition_tbl> definition_table;

const char* text_or_empty(const OwnedText& text) { return text != nullptr ? text.get() : ""; }

/// The copy is made before the old text is released, so a setting may be set to its own text; without memory for the
/// copy the setting is unset.
void store_text(OwnedText& setting, const char* text) {
  setting.reset(QZ_strdup(text));
  if (setting == nullptr) throw QZX_memory_alloc();
}

[[noreturn]] void throw_invalid_argument() { throw QZX_logging_illegal_argument("invalid argument", 0); }

[[gnu::destructor]] void prepare_for_the_end() { definition_table->stop_buffering(); }

bool file_exists(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0;
}

/// Two threads may do this at once, so it is looked again whether the flag, once written, is right.
void set_source(std::unique_ptr<_qz_LOG_configuration> source, std::atomic<bool>& flag) noexcept {
  replace_configuration_source(std::move(source));
  bool has_source = false;
  do {
    has_source = has_configuration_source();
    flag = has_source;
  } while (has_configuration_source() != has_source);
}

}  // namespace

void qz_LOG_LogConfig::SetSynchronizationLevel(qz_SynchronizationLevelType level) {
  if (level < kSynchronizationLevels) store_word(synchronization_level, level);
}

qz_SynchronizationLevelType qz_LOG_LogConfig::GetSynchronizationLevel() { return load_word(synchronization_level); }

void qz_LOG_LogConfig::EnableCountConfig(bool enable) { store_word(count_config_enabled, enable); }

bool qz_LOG_LogConfig::IsEnableCountConfig() { return load_word(count_config_enabled); }

void qz_LOG_LogConfig::SetICUEnabled(bool enable) {
  store_word(b_is_icu_enabled, enable);
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::SetICUEnabled, ok!\n");
}

bool qz_LOG_LogConfig::IsICUEnabled() { return load_word(b_is_icu_enabled); }

void qz_LOG_LogConfig::SetActionAttrLenExceed(int action) {
  if (static_cast<unsigned>(action) >= kActions) {
    throw QZX_logging_illegal_argument("The action when attribute exceeds limitation is invalid!\n", 0);
  }
  store_word(action_on_exceed, action);
}

int qz_LOG_LogConfig::GetActionAttrLenExceed() { return load_word(action_on_exceed); }

void qz_LOG_LogConfig::SetActionOutOfRange(int action) {
  if (action != QZ_OUT_OF_RANGE_CUT && action != QZ_OUT_OF_RANGE_REFUSE) {
    throw QZX_logging_illegal_argument("The action when a value is out of range is invalid!\n", 0);
  }
  action_out_of_range.store(action, std::memory_order_relaxed);
}

int qz_LOG_LogConfig::GetActionOutOfRange() { return action_out_of_range.load(std::memory_order_relaxed); }

_qz_LOG_log_definition_tbl* qz_LOG_LogConfig::GetDefinitionTable() { return definition_table.get(); }

void qz_LOG_LogConfig::ClearDefinitions() {
  const qz_THREAD_global_lock lock;
  definition_table->clear();
  _qz_LOG_log_definition::clear_global_attr_info();
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::ClearDefinitions, ok!\n");
}

void qz_LOG_LogConfig::SetDefinitionPath(const char* path) {
  const qz_THREAD_global_lock lock;
  if (path == nullptr) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_LOG_LogConfig::SetDefinitionPath, path==0!\n");
    throw_invalid_argument();
  }
  store_text(*definition_path, path);
  definition_table->set_precompiled_definition_file_path(definition_path->get());
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::SetDefinitionPath, path=%s!\n", definition_path->get());
}

const char* qz_LOG_LogConfig::GetDefinitionPath() { return text_or_empty(*definition_path); }

void qz_LOG_LogConfig::SetAuxDefinitionPath(const char* path) {
  if (path == nullptr) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_LOG_LogConfig::SetAuxDefinitionPath path==0\n");
    throw_invalid_argument();
  }
  const qz_THREAD_global_lock lock;
  store_text(*aux_definition_path, path);
  definition_table->set_precompiled_aux_definition_file_path(aux_definition_path->get());
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::SetAuxDefinitionPath, path=%s!\n", aux_definition_path->get());
}

const char* qz_LOG_LogConfig::GetAuxDefinitionPath() { return text_or_empty(*aux_definition_path); }

void qz_LOG_LogConfig::SetDefinitionMemory(std::size_t bytes) {
  const qz_THREAD_global_lock lock;
  DefinitionMemory::set_limit(bytes);
  definition_table->fit_memory();
  PreparedTexts::fit_memory();
}

std::size_t qz_LOG_LogConfig::GetDefinitionMemory() { return DefinitionMemory::limit(); }

void qz_LOG_LogConfig::SetMessageCatalogPath(const char* path) {
  if (!IsICUEnabled()) return;
  const qz_THREAD_global_lock lock;
  _qz_LOG_log_message::set_resource_path(path);
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::SetMessageCatalogPath, path=%s!\n",
                  path != nullptr ? path : "(NULL)");
}

const char* qz_LOG_LogConfig::GetMessageCatalogPath() {
  return IsICUEnabled() ? _qz_LOG_log_message::get_resource_path() : "";
}

void qz_LOG_LogConfig::SetLocale(qz_Locale locale) {
  const qz_THREAD_global_lock lock;
  qz_I18N_set_locale(locale);
  _qz_LOG_log_message::reopen_catalog();
}

qz_Locale qz_LOG_LogConfig::GetLocale() { return qz_I18N_get_locale(); }

void qz_LOG_LogConfig::SetCodePage(const char* name) {
  if (name == nullptr) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_LOG_LogConfig::SetCodePage codepage==0!\n");
    throw_invalid_argument();
  }
  const qz_THREAD_global_lock lock;
  store_text(*code_page, name);
  QZ_DEBUG_RECORD(2, kSource, "%s:%d qz_LOG_LogConfig::SetCodePage codepage==%s!\n", code_page->get());
}

const char* qz_LOG_LogConfig::GetCodePage() { return text_or_empty(*code_page); }

void qz_LOG_LogConfig::SetConfigurationSource(const char* path, qz_ConfigurationSourceType type) {
  if (path == nullptr) {
    set_source(nullptr, has_configuration_source_);
    return;
  }
  if (type != QZ_CONFIGURATION_FILE_MAY_BE_MISSING && !file_exists(path)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_LOG_LogConfig::SetConfigurationSource, invalid argument!\n");
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_LOG_LogConfig::SetConfigurationSource, there is no file %s!\n", path);
    throw_invalid_argument();
  }
  const qz_THREAD_global_lock lock;
  std::unique_ptr<_qz_LOG_configuration> source;
  try {
    source.reset(new_object<_qz_LOG_file_configuration>(path, _qz_LOG_file_configuration::kByItself));
  } catch (const QZX_memory_alloc&) {
    set_source(nullptr, has_configuration_source_);
    throw;
  }
  set_source(std::move(source), has_configuration_source_);
}

bool qz_LOG_LogConfig::GetConfigurationIntegerValue(const char* section, const char* key, unsigned& value) {
  if (section == nullptr || key == nullptr) throw_invalid_argument();
  const ConfigurationUse source;
  return source && source->get_integer_value(section, key, value);
}

std::atomic<bool> qz_LOG_LogConfig::has_configuration_source_{false};

_qz_LOG_configuration* qz_LOG_LogConfig::_get_configuration_ptr() { return current_configuration_source(); }
