#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "definitions/prepared_message.h"
#include "foundation/allocate.h"
#include "foundation/locks.h"
#include "foundation/never_destroyed.h"
#include "message/icu_memory.h"
#include "message/logmsg.h"
#include "message/resource_bundle.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_locale.h"
#include "util/debug_record.h"

using namespace qzlog;

namespace {

constexpr const char* kSource = "logmsg";
constexpr const char* kStringTable = "STRING_TABLE";

/// The prepared forms of the open catalog's templates. Rendering threads add to it, so it has a lock of its own.
class CatalogTemplates {
 public:
  /// Null when it is not there.
  const PreparedMessage* find(std::string_view message_id) const {
    const qz_LOG_CReaderSentry reader(lock_);
    const auto found = templates_.find(message_id);
    return found != templates_.end() ? found->second.get() : nullptr;
  }
  /// Returns the one that is kept: another thread's, if that was faster.
  const PreparedMessage& keep(std::string_view message_id, PreparedMessageRef fresh) {
    const qz_LOG_CWriterSentry writer(lock_);
    return *templates_.emplace(message_id, std::move(fresh)).first->second.get();
  }
  void clear() {
    const qz_LOG_CWriterSentry writer(lock_);
    templates_.clear();
  }

 private:
  mutable qz_LOG_CRWLock lock_{nullptr};
  std::map<std::string, PreparedMessageRef, std::less<>> templates_;
};

// Guarded by the process-wide lock of the settings.
struct Catalog {
  qz_String path;
  std::unique_ptr<MessageBundle> bundle;  // null while closed; one that failed to open is kept, without any text
  CatalogTemplates templates;
};

NeverDestroyed<Catalog> catalog;

void close_bundle() {
  catalog->templates.clear();
  catalog->bundle.reset();
}

void record_failure(MessageBundle::State state) {
  if (state == MessageBundle::State::kMissing) {
    QZ_DEBUG_RECORD_AT(1, kSource, 248,
                       "%s:%d _qz_LOG_log_message::set_resource_path Unable to locate resource bundle %s!\n",
                       catalog->path.c_str());
  } else {
    QZ_DEBUG_RECORD_AT(1, kSource, 256,
                       "%s:%d _qz_LOG_log_message::set_resource_path Unable to access resource bundle %s!\n",
                       catalog->path.c_str());
  }
}

/// To ICU a name without a folder is one of its own data. Who gives one means a folder, and where ICU has nothing of
/// that name it is taken for one.
MessageBundle::State open_where_it_is(const std::string& path, const char* locale) {
  const MessageBundle::State state = catalog->bundle->open(path, locale);
  const bool may_be_folder = !path.empty() && path.front() != '/' && !path.starts_with("./");
  if (state != MessageBundle::State::kMissing || !may_be_folder) return state;
  return catalog->bundle->open("./" + path, locale);
}

/// Opens the path's bundle for the locale, in the place of what is open. Whatever happens, the catalog counts as open.
MessageBundle::State open_bundle() {
  catalog->templates.clear();
  *catalog->bundle = MessageBundle();
  const icu::Locale locale = _qz_LOG_log_message::get_locale();
  const MessageBundle::State state = open_where_it_is(catalog->path.c_str(), locale.getName());
  if (state != MessageBundle::State::kOpened) record_failure(state);
  return state;
}

[[noreturn]] void throw_bundle_failure(const char* text_before_path) {
  qz_String text(text_before_path);
  text += catalog->path.c_str();
  text += "\".";
  throw QZX_logging_missing_resource(text.c_str(), 0);
}

const icu::Locale& default_locale() {
  // Without memory for it ICU gives a reference to nothing, which the compiler takes to be impossible.
  const icu::Locale* volatile const locale = &icu::Locale::getDefault();
  if (locale == nullptr) throw QZX_memory_alloc();
  // Of a name in the environment that is none ICU makes a locale whose formats crash.
  return locale->isBogus() ? icu::Locale::getRoot() : *locale;
}

}  // namespace

void _qz_LOG_log_message::set_resource_path(const char* path) try {
  if (path == nullptr) {
    close_bundle();
    catalog->path._assign(nullptr, 0);
    QZ_DEBUG_RECORD_AT(2, kSource, 233, "%s:%d _qz_LOG_log_message::set_resource_path set resource_path=\"\"!\n");
    return;
  }
  catalog->path = qz_String(path);
  close_bundle();
  catalog->bundle.reset(new_object<MessageBundle>());
  const MessageBundle::State state = open_bundle();
  if (state == MessageBundle::State::kMissing) {
    throw_bundle_failure("<QZX_logging_missing_resource> Unable to locate resource bundle \"");
  }
  if (state == MessageBundle::State::kFailed) {
    throw_bundle_failure("<QZX_logging_missing_resource> Unable to access resource bundle \"");
  }
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

const char* _qz_LOG_log_message::get_resource_path() { return catalog->path.c_str(); }

bool _qz_LOG_log_message::is_catalog_open() { return catalog->bundle != nullptr; }

void _qz_LOG_log_message::reopen_catalog() noexcept {
  if (!is_catalog_open()) return;
  try {
    open_bundle();
  } catch (const std::bad_alloc&) {
    record_failure(MessageBundle::State::kFailed);
  } catch (const QZX_memory_alloc&) {
    record_failure(MessageBundle::State::kFailed);
  }
}

icu::UnicodeString _qz_LOG_log_message::_get_string(const char* message_id) try {
  const ForkDelay fork_delay;
  MessageBundle::Text found = catalog->bundle->find_text(kStringTable, message_id);
  if (found.state == MessageBundle::Text::State::kNoTable) {
    throw QZX_logging_missing_resource("< QZX_logging_missing_resource> Unable to access the string table resource.",
                                       0);
  }
  if (found.state == MessageBundle::Text::State::kNoText) {
    throw QZX_logging_missing_resource(
        "<QZX_logging_missing_resource> Unable to retrieve the string from the string table.", 0);
  }
  icu::UnicodeString text(found.text.data(), static_cast<std::int32_t>(found.text.size()));
  if (text.isBogus()) throw QZX_memory_alloc();
  return text;
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

const PreparedMessage& _qz_LOG_log_message::prepare_catalog_message(const char* message_id,
                                                                    const _qz_LOG_log_definition& definition,
                                                                    PrepareMessage prepare) {
  const PreparedMessage* const known = catalog->templates.find(message_id);
  return known != nullptr ? *known : catalog->templates.keep(message_id, prepare(_get_string(message_id), definition));
}

const char* _qz_LOG_log_message::get_locale_name() {
  const char* const name = qz_I18N_get_locale_name(qz_I18N_get_locale());
  if (name[0] != '\0') return name;
  const ForkDelay fork_delay;
  return default_locale().getName();
}

icu::Locale _qz_LOG_log_message::get_locale() {
  const ForkDelay fork_delay;
  return with_icu_memory([] {
    const IcuMemory memory;
    const char* const name = qz_I18N_get_locale_name(qz_I18N_get_locale());
    icu::Locale locale = name[0] != '\0' ? icu::Locale(name) : default_locale();
    memory.check();
    return locale;
  });
}
