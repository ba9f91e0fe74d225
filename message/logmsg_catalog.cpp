#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>

#include <unicode/resbund.h>

#include "definitions/message_text.h"
#include "message/icu_memory.h"
#include "message/logmsg.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_locale.h"
#include "util/debug_record.h"

namespace {

constexpr const char* kSource = "logmsg";
constexpr const char* kStringTable = "STRING_TABLE";

// Guarded by the process-wide lock of the settings. A bundle that failed to open is kept, and never released at unload.
qz_String resource_path;
icu::ResourceBundle* p_rsrc_bundle = nullptr;

/// The prepared forms of the open catalog's templates. Rendering threads add to it, so it has a lock of its own.
class CatalogTemplates {
 public:
  /// Null when it is not there.
  const _qz_LOG_prepared_message* find(std::string_view message_id) const {
    const std::shared_lock<std::shared_mutex> reader(mutex_);
    const auto found = templates_.find(message_id);
    return found != templates_.end() ? found->second.get() : nullptr;
  }
  /// Returns the one that is kept: another thread's, if that was faster.
  const _qz_LOG_prepared_message& keep(std::string_view message_id,
                                       std::unique_ptr<const _qz_LOG_prepared_message> fresh) {
    const std::unique_lock<std::shared_mutex> writer(mutex_);
    return *templates_.emplace(message_id, std::move(fresh)).first->second;
  }
  void clear() {
    const std::unique_lock<std::shared_mutex> writer(mutex_);
    templates_.clear();
  }

 private:
  mutable std::shared_mutex mutex_;
  std::map<std::string, std::unique_ptr<const _qz_LOG_prepared_message>, std::less<>> templates_;
};

CatalogTemplates catalog_templates;

void close_bundle() {
  catalog_templates.clear();
  delete p_rsrc_bundle;
  p_rsrc_bundle = nullptr;
}

[[noreturn]] void throw_bundle_failure(const char* text_before_path) {
  qz_String text(text_before_path);
  text += resource_path.c_str();
  text += "\".";
  throw QZX_logging_missing_resource(text.c_str(), 0);
}

void open_bundle() {
  close_bundle();
  UErrorCode status = U_ZERO_ERROR;
  p_rsrc_bundle = new icu::ResourceBundle(resource_path.c_str(), _qz_LOG_log_message::get_locale(), status);
  if (p_rsrc_bundle == nullptr) throw QZX_memory_alloc();
  if (status == U_MISSING_RESOURCE_ERROR) {
    QZ_DEBUG_RECORD_AT(1, kSource, 248,
                       "%s:%d _qz_LOG_log_message::set_resource_path Unable to locate resource bundle %s!\n",
                       resource_path.c_str());
    throw_bundle_failure("<QZX_logging_missing_resource> Unable to locate resource bundle \"");
  }
  if (U_FAILURE(status)) {
    QZ_DEBUG_RECORD_AT(1, kSource, 256,
                       "%s:%d _qz_LOG_log_message::set_resource_path Unable to access resource bundle %s!\n",
                       resource_path.c_str());
    throw_bundle_failure("<QZX_logging_missing_resource> Unable to access resource bundle \"");
  }
}

const icu::Locale& default_locale() {
  // Without memory for it ICU gives a reference to nothing, which the compiler takes to be impossible.
  const icu::Locale* volatile const locale = &icu::Locale::getDefault();
  if (locale == nullptr) throw QZX_memory_alloc();
  return *locale;
}

}  // namespace

void _qz_LOG_log_message::set_resource_path(const char* path) {
  if (path == nullptr) {
    close_bundle();
    resource_path._assign(nullptr, 0);
    QZ_DEBUG_RECORD_AT(2, kSource, 233, "%s:%d _qz_LOG_log_message::set_resource_path set resource_path=\"\"!\n");
    return;
  }
  resource_path = qz_String(path);
  open_bundle();
}

const char* _qz_LOG_log_message::get_resource_path() { return resource_path.c_str(); }

bool _qz_LOG_log_message::is_catalog_open() { return p_rsrc_bundle != nullptr; }

void _qz_LOG_log_message::reopen_catalog() {
  if (is_catalog_open()) open_bundle();
}

icu::UnicodeString _qz_LOG_log_message::_get_string(const char* message_id) {
  const IcuMemory memory;
  UErrorCode status = U_ZERO_ERROR;
  const icu::ResourceBundle table = p_rsrc_bundle->get(kStringTable, status);
  memory.check(status);
  if (U_FAILURE(status)) {
    throw QZX_logging_missing_resource("< QZX_logging_missing_resource> Unable to access the string table resource.",
                                       0);
  }
  icu::UnicodeString text = table.getStringEx(message_id, status);
  memory.check(status);
  if (U_FAILURE(status)) {
    throw QZX_logging_missing_resource(
        "<QZX_logging_missing_resource> Unable to retrieve the string from the string table.", 0);
  }
  return text;
}

const _qz_LOG_prepared_message& _qz_LOG_log_message::prepare_catalog_message(const char* message_id,
                                                                             const _qz_LOG_log_definition& definition,
                                                                             PrepareMessage prepare) {
  const _qz_LOG_prepared_message* const known = catalog_templates.find(message_id);
  return known != nullptr ? *known : catalog_templates.keep(message_id, prepare(_get_string(message_id), definition));
}

const char* _qz_LOG_log_message::get_locale_name() {
  const char* const name = qz_I18N_get_locale_name(qz_I18N_get_locale());
  return name[0] != '\0' ? name : default_locale().getName();
}

icu::Locale _qz_LOG_log_message::get_locale() {
  const IcuMemory memory;
  const char* const name = qz_I18N_get_locale_name(qz_I18N_get_locale());
  icu::Locale locale = name[0] != '\0' ? icu::Locale(name) : default_locale();
  memory.check();
  return locale;
}
