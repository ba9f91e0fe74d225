#include "config/logconf.h"

#include <sys/stat.h>

#include <atomic>
#include <climits>
#include <string_view>
#include <utility>

#include "config/configuration_format.h"
#include "foundation/allocate.h"
#include "foundation/file_handle.h"
#include "foundation/qz_libc.h"

using namespace qzlog;

int _qz_LOG_file_configuration::bCfgReaded = 0;

namespace {

constexpr unsigned kTableSize = 3;
constexpr const char* kDelimiters = " \t\n=";
constexpr const char* kFallbackSection = "global";

// Released after the table is filled and acquired before it is read without a lock.
bool is_loaded() {
  return std::atomic_ref<int>(_qz_LOG_file_configuration::bCfgReaded).load(std::memory_order_acquire) != 0;
}
void set_loaded(int loaded) {
  std::atomic_ref<int>(_qz_LOG_file_configuration::bCfgReaded).store(loaded, std::memory_order_release);
}

const char* text_or_empty(const char* text) { return text != nullptr ? text : ""; }

unsigned number_of(const char* text) {
  const bool hexadecimal = text[1] == 'x' || text[1] == 'X';
  return hexadecimal ? QZ_hexto4u(text) : QZ_strto4u(text);
}

/// Fills a table with the settings of an open file.
class SettingsParser {
 public:
  SettingsParser(std::FILE* file, _qz_LOG_log_setting_tbl& settings) : file_(file), settings_(settings) {}

  void parse() {
    const char* token = next_line_token();
    while (token != nullptr) {
      if (!is_section_header(token)) {
        token = next_line_token();
        continue;
      }
      // Whatever the last character is, it is taken for the closing bracket.
      section_._assign(token + 1, static_cast<unsigned>(QZ_strlen(token) - 2));
      token = parse_section();
    }
  }

 private:
  static bool is_section_header(const char* token) { return token[0] == '[' && token[1] != '\0'; }

  /// The first token of the next line ("" for a line without one), null when no further line is reported.
  const char* next_line_token() {
    if (lines_.readLine(file_, line_, kMostConfigurationLineBytes) != 0) return nullptr;
    const char* const token = QZ_strtok(line_, kDelimiters);
    return token != nullptr ? token : "";
  }

  /// Stores the entries of the current section and returns the first token of the line that ends it. The end of the
  /// lines ends the section only: a further line is asked for once more.
  const char* parse_section() {
    for (;;) {
      const char* const key = next_line_token();
      if (key == nullptr) return next_line_token();
      if (key[0] == '[') return key;
      const char* const value = key[0] == '\0' ? nullptr : QZ_strtok(nullptr, kDelimiters);
      if (value != nullptr) settings_.create_entry(section_.c_str(), key, number_of(value));
    }
  }

  std::FILE* file_;
  _qz_LOG_log_setting_tbl& settings_;
  read_file lines_;
  char line_[kMostConfigurationLineBytes + 1];
  qz_String section_;
};

bool find_in(const _qz_LOG_log_setting_tbl& settings, const char* section, const char* key, unsigned& value) {
  const unsigned* found = settings.find_entry(section, key);
  if (found == nullptr) found = settings.find_entry(kFallbackSection, key);
  if (found == nullptr) return false;
  value = *found;
  return true;
}

}  // namespace

void _qz_LOG_log_setting_tbl::create_entry(const char* section, const char* key, unsigned value) {
  qz_String name;
  _construct_hash_key_string(section, key, name);
  settings_.at(name) = value;
}

const unsigned* _qz_LOG_log_setting_tbl::find_entry(const char* section, const char* key) const {
  return settings_.find(text_or_empty(section), key);
}

void _qz_LOG_log_setting_tbl::clear() {
  settings_.clear();
  filter_values_.clear();
  filter_values_gathered_ = false;
}

void _qz_LOG_log_setting_tbl::gather_filter_values() {
  settings_.for_each([this](const qz_String& name, unsigned value) { gather_from(name, value); });
  const FilterValues* const global = filter_values_.find(kFallbackSection, "");
  global_filter_values_ = global != nullptr ? *global : FilterValues();
  filter_values_.for_each(
      [this](const qz_String&, FilterValues& values) { values.complete_from(global_filter_values_); });
  filter_values_gathered_ = true;
}

/// Whatever stands before a filter's key may be a section, and a name may end with two keys: "DebugLogLevelLow".
void _qz_LOG_log_setting_tbl::gather_from(const qz_String& name, unsigned value) {
  const std::string_view text(name.c_str(), name.length());
  for (std::size_t index = 0; index < kFilterKeyCount; ++index) {
    const std::string_view key = kFilterKeyNames[index];
    if (!text.ends_with(key)) continue;
    qz_String section;
    section._assign(text.data(), static_cast<unsigned>(text.size() - key.size()));
    filter_values_.at(section).set(static_cast<FilterKey>(index), value);
  }
}

const FilterValues* _qz_LOG_log_setting_tbl::find_filter_values(const char* section) const {
  if (!filter_values_gathered_) return nullptr;
  const FilterValues* const found = filter_values_.find(text_or_empty(section), "");
  return found != nullptr ? found : &global_filter_values_;
}

void _qz_LOG_log_setting_tbl::_construct_hash_key_string(const char* section, const char* key, qz_String& out) {
  out = text_or_empty(section);
  out += key;
}

int read_file::readLine(std::FILE* file, char* buffer, int max) {
  // The position has 32 bits; a file that long is not read to its end.
  if (offset_ > INT_MAX - max - 2 || QZ_fseek(file, offset_, SEEK_SET) != 0) return -1;
  int count = 0;
  for (;;) {
    const int character = std::getc(file);
    if (character == EOF) {
      buffer[count] = '\0';
      offset_ += count;
      return -2;
    }
    if (character == '\n' || character == '\r') return finish_line(file, buffer, count);
    if (count >= max) return -1;
    buffer[count++] = static_cast<char>(character);
  }
}

/// The line break has been read. A second one directly behind it belongs to the line, whatever the order of the two.
int read_file::finish_line(std::FILE* file, char* buffer, int count) {
  buffer[count] = '\0';
  const int following = std::getc(file);
  if (following == EOF) {
    offset_ += count;
    return -2;
  }
  offset_ += count + (following == '\n' || following == '\r' ? 2 : 1);
  return 0;
}

struct _qz_LOG_file_configuration::Loaded {
  _qz_LOG_log_setting_tbl settings{kTableSize};
  std::unique_ptr<const Loaded> before;
};

_qz_LOG_file_configuration::~_qz_LOG_file_configuration() = default;

_qz_LOG_file_configuration::_qz_LOG_file_configuration(const char* path, LoadRule rule)
    : lock_(nullptr), path_(path), rule_(rule) {
  set_loaded(0);
}

bool _qz_LOG_file_configuration::get_integer_value(const char* section, const char* key, unsigned& value) const {
  if (is_loaded()) {
    const _qz_LOG_log_setting_tbl* const settings = settings_.load(std::memory_order_acquire);
    if (settings != nullptr) return find_in(*settings, section, key, value);
    // An instance that was not loaded itself has nothing to say, once another was.
    if (rule_ == kOnceForAll) return false;
  }
  struct stat status = {};
  if (stat(path_.c_str(), &status) != 0) return false;
  if (status.st_mtime == modification_time_.load(std::memory_order_acquire)) {
    const qz_LOG_CReaderSentry reader(lock_);
    return _find_value(section, key, value);
  }
  const qz_LOG_CWriterSentry writer(lock_);
  return load(status.st_mtime) && _find_value(section, key, value);
}

const FilterValues* _qz_LOG_file_configuration::get_filter_values(const char* section) const {
  const _qz_LOG_log_setting_tbl* const settings = settings_.load(std::memory_order_acquire);
  return settings != nullptr && is_loaded() ? settings->find_filter_values(section) : nullptr;
}

/// Under the writer lock. The time is stored even when the file cannot be read: later lookups that find the same time
/// answer that there is nothing.
bool _qz_LOG_file_configuration::load(long long modification_time) const {
  // Another thread may have loaded it since.
  if (settings_.load(std::memory_order_relaxed) != nullptr && is_loaded()) return true;
  if (modification_time_.load(std::memory_order_relaxed) == modification_time) return true;
  // Without memory nothing is stored, and the next lookup tries again.
  std::unique_ptr<Loaded> loaded = _save_all_from_file();
  modification_time_.store(modification_time, std::memory_order_release);
  settings_.store(loaded != nullptr ? &loaded->settings : nullptr, std::memory_order_release);
  if (loaded == nullptr) return false;
  loaded->before = std::move(loaded_);
  loaded_ = std::move(loaded);
  set_loaded(1);
  return true;
}

bool _qz_LOG_file_configuration::_find_value(const char* section, const char* key, unsigned& value) const {
  const _qz_LOG_log_setting_tbl* const settings = settings_.load(std::memory_order_acquire);
  return settings != nullptr && find_in(*settings, section, key, value);
}

/// Null for a file that cannot be read.
std::unique_ptr<_qz_LOG_file_configuration::Loaded> _qz_LOG_file_configuration::_save_all_from_file() const {
  const FileHandle file(QZ_fopen(path_.c_str(), "rb"));
  if (file == nullptr) return nullptr;
  // A directory can be opened, but not read.
  if (std::getc(file.get()) == EOF && std::ferror(file.get()) != 0) return nullptr;
  std::unique_ptr<Loaded> loaded(new_object<Loaded>());
  SettingsParser(file.get(), loaded->settings).parse();
  loaded->settings.gather_filter_values();
  return loaded;
}
