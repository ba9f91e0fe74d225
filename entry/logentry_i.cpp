#include "entry/logentry_i.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "entry/logentry_i_failures.h"
#include "foundation/atomic_word.h"
#include "qzlog/logcfg.h"

using namespace qzlog;

unsigned int _qz_LOG_log_entry_imp::log_major_version = 0;
unsigned int _qz_LOG_log_entry_imp::log_minor_version = 0;
unsigned int _qz_LOG_log_entry_imp::global_operation_mode = 2;

namespace {

// The IDs that are asked for the log version when no entry's ID is at hand.
constexpr unsigned kLastVersionEntryId = 9;
constexpr int kNotRecorded = -1;

bool is_null_or_empty(const char* text) { return text == nullptr || text[0] == '\0'; }

DefinitionRef find_version_definition(const _qz_LOG_log_definition_tbl& table) {
  for (unsigned id = 0; id <= kLastVersionEntryId; ++id) {
    DefinitionRef definition = table.acquire_entry(id);
    if (definition) return definition;
  }
  return {};
}

/// Stores the numbers of "MAJOR.MINOR"; what is not there stays as it was.
void store_version_pair(const char* version_text) {
  int major = 0;
  int minor = 0;
  const int numbers = std::sscanf(version_text, "%d.%d", &major, &minor);
  if (numbers >= 1) store_word(_qz_LOG_log_entry_imp::log_major_version, static_cast<unsigned>(major));
  if (numbers >= 2) store_word(_qz_LOG_log_entry_imp::log_minor_version, static_cast<unsigned>(minor));
}

/// Nearly always the value is there already: what is only read, threads can share.
void store_if_changed(unsigned int& word, unsigned int value) {
  if (load_word(word) != value) store_word(word, value);
}

/// Stores a version as entries with an ID do, deliberately unlike store_version_pair: a tag without a number has the
/// major version 0, and one without a point leaves the minor version as it was.
void store_version_of_entry(const VersionNumbers& version) {
  store_if_changed(_qz_LOG_log_entry_imp::log_major_version, version.major);
  if (version.has_minor) store_if_changed(_qz_LOG_log_entry_imp::log_minor_version, version.minor);
}

[[noreturn]] void throw_entry_not_found() { throw QZX_logging_entry_type_not_found("Entry id argument is invalid", 0); }

}  // namespace

_qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp() : definition_table_(qz_LOG_LogConfig::GetDefinitionTable()) {
  const DefinitionRef definition = find_version_definition(*definition_table_);
  if (!definition) return;
  QZ_memcpy(version_text_, definition->get_version_tag(), sizeof(version_text_));
  store_version_pair(version_text_);
}

_qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp(unsigned int entry_id, unsigned int log_level)
    : definition_table_(qz_LOG_LogConfig::GetDefinitionTable()), hold_(definition_table_->hold_entry(entry_id)) {
  if (!hold_) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, invalid entry id:%d\n",
                    entry_id);
    throw_entry_not_found();
  }
  head_.entry_id = entry_id;
  if (log_level > LOG_LEVEL_HIGH) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp, log level=%d > LOG_LEVEL_HIGH\n", log_level);
    throw_with_id<QZX_logging_invalid_log_level>("log level argument is invalid under Entry ID ");
  }
  head_.log_level = log_level;
  take_from_definition();
  store_version_of_entry(hold_->definition().get_version_numbers());
}

void _qz_LOG_log_entry_imp::take_from_definition() {
  const _qz_LOG_log_definition& definition = hold_->definition();
  next_attribute_ = 0;
  head_.property_mask = definition.get_property_mask();
  QZ_memcpy(version_text_, definition.get_version_tag(), sizeof(version_text_));
}

_qz_LOG_log_entry_imp::_qz_LOG_log_entry_imp(const _qz_LOG_log_entry_imp& source)
    : qz_UTIL_no_inadvertant_copies(), definition_table_(qz_LOG_LogConfig::GetDefinitionTable()) {
  _copy(source);
}

_qz_LOG_log_entry_imp& _qz_LOG_log_entry_imp::operator=(const _qz_LOG_log_entry_imp& source) {
  _clear(true);
  _copy(source);
  return *this;
}

_qz_LOG_log_entry_imp::~_qz_LOG_log_entry_imp() = default;

void _qz_LOG_log_entry_imp::_copy(const _qz_LOG_log_entry_imp& source) {
  last_daylight_flag_ = source.last_daylight_flag_;
  last_zone_difference_ = source.last_zone_difference_;
  set_entry_id(source.head_.entry_id);
  set_log_level(source.head_.log_level);
  timestamp_ = source.timestamp_;
  QZ_memcpy(version_text_, source.version_text_, sizeof(version_text_));
  message_stale_ = source.message_stale_;
  last_use_default_ = source.last_use_default_;
  if (!source.message_stale_) message_cache_ = source.message_cache_;

  source.attributes_.for_each(
      [this](const KnownName* name, const _qz_LOG_type_base& value) { attributes_.put_copy(name, value); });
}

/// An entry has nothing that only a full clear empties.
void _qz_LOG_log_entry_imp::_clear(bool /*full*/) {
  last_daylight_flag_ = kNotRecorded;
  last_zone_difference_ = kNotRecorded;
  head_.log_level = 0;
  timestamp_.set_zero();
  _clear_attribute_list();
}

void _qz_LOG_log_entry_imp::clear_attribs(bool full) { _clear(full); }

void _qz_LOG_log_entry_imp::_clear_attribute_list() {
  message_stale_ = true;
  attributes_.clear();
  next_attribute_ = 0;
}

void _qz_LOG_log_entry_imp::set_entry_id(unsigned int entry_id) {
  QZ_DEBUG_RECORD(3, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::set_entry_id :%d\n", entry_id);
  hold_ = definition_table_->hold_entry(entry_id);
  if (!hold_) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::set_entry_id, invalid entry id:%d\n", entry_id);
    throw_entry_not_found();
  }
  head_.entry_id = entry_id;
  message_stale_ = true;
  head_.log_level = 0;
  take_from_definition();
}

void _qz_LOG_log_entry_imp::set_log_level(unsigned int log_level) {
  if (log_level > LOG_LEVEL_HIGH) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::set_log_level, log level=%d >LOG_LEVEL_HIGHT\n",
                    log_level);
    throw_with_id<QZX_logging_invalid_log_level>("log level argument is invalid under Entry ID ");
  }
  head_.log_level = log_level;
  message_stale_ = true;
}

void _qz_LOG_log_entry_imp::set_log_major_version(unsigned int major) {
  if (major < 2 || major > 99) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::set_log_major_version, log major version not in valid range\n");
    throw QZX_logging_illegal_argument("invalid argument:major version should >=2 && <=99", 0);
  }
  store_word(log_major_version, major);
}

void _qz_LOG_log_entry_imp::set_log_minor_version(unsigned int minor) {
  if (minor > 999) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::set_log_minor_version, log minor version not in valid range\n");
    throw QZX_logging_illegal_argument("invalid argument:minor version should >=0 && <=999 ", 0);
  }
  store_word(log_minor_version, minor);
}

void _qz_LOG_log_entry_imp::set_log_version(unsigned int major, unsigned int minor) {
  set_log_major_version(major);
  set_log_minor_version(minor);
}

void _qz_LOG_log_entry_imp::get_log_version(unsigned int& major, unsigned int& minor) {
  const DefinitionRef definition = find_version_definition(*qz_LOG_LogConfig::GetDefinitionTable());
  if (definition) store_version_pair(definition->get_version_tag());
  major = load_word(log_major_version);
  minor = load_word(log_minor_version);
}

unsigned int _qz_LOG_log_entry_imp::get_log_major_version() {
  unsigned int major = 0;
  unsigned int minor = 0;
  get_log_version(major, minor);
  return major;
}

unsigned int _qz_LOG_log_entry_imp::get_log_minor_version() {
  unsigned int major = 0;
  unsigned int minor = 0;
  get_log_version(major, minor);
  return minor;
}

qz_Time _qz_LOG_log_entry_imp::get_timestamp(bool gmt) const {
  qz_Time time = timestamp_;
  if (gmt) {
    time.local_to_GMT();
  } else {
    time.GMT_to_local();
  }
  return time;
}

void _qz_LOG_log_entry_imp::set_timestamp(const qz_Time& time, bool gmt) {
  message_stale_ = true;
  timestamp_ = time;
  timestamp_.set_GMT_time_mode(gmt);

  int timezone_offset = 0;
  bool daylight_saving = false;
  timestamp_.get_zone(timezone_offset, daylight_saving);
  const int daylight_minutes = daylight_saving && !gmt ? 60 : 0;
  const auto zone_difference = static_cast<short>(daylight_minutes - timezone_offset);
  if (zone_difference != last_zone_difference_) {
    add_attrib_2("TIMEZONE_DIFFERENCE", zone_difference);
    last_zone_difference_ = zone_difference;
  }
  if (static_cast<int>(daylight_saving) != last_daylight_flag_) {
    add_attrib_bool("DAYLIGHT_SAVING_ACTIVE", daylight_saving);
    last_daylight_flag_ = static_cast<int>(daylight_saving);
  }
}

void _qz_LOG_log_entry_imp::set_computer_info(const char* computer_info) {
  if (is_null_or_empty(computer_info)) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::set_computer_info, computer_info=NULL\n");
    throw QZX_logging_illegal_argument("invalid argument:computer_info", 0);
  }
  add_attrib_mbstr("COMPUTER_NAME", computer_info, true);
}

void _qz_LOG_log_entry_imp::set_product_code(unsigned int code) {
  add_attrib_2u("PRODUCT_CODE", narrowed<unsigned short>("PRODUCT_CODE", code));
}

void _qz_LOG_log_entry_imp::set_product_platform_code(unsigned int code) {
  add_attrib_2u("PRODUCT_PLATFORM_CODE", narrowed<unsigned short>("PRODUCT_PLATFORM_CODE", code));
}

void _qz_LOG_log_entry_imp::set_product_language_code(unsigned int code) {
  add_attrib_4u("PRODUCT_LANGUAGE_CODE", code);
}

void _qz_LOG_log_entry_imp::set_product_version(const char* version) {
  if (is_null_or_empty(version)) {
    // The record names another setter and has no line break: log readers know it in this form.
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::set_product_language_code, version=NULL");
    throw QZX_logging_illegal_argument("invalid argument:product_version", 0);
  }
  add_attrib_mbstr("PRODUCT_VERSION", version, true);
}

void _qz_LOG_log_entry_imp::set_component_code(unsigned int code) { add_attrib_4u("COMPONENT_CODE", code); }

void _qz_LOG_log_entry_imp::set_severity_code(unsigned int code) {
  add_attrib_1u("SEVERITY_CODE", narrowed<unsigned char>("SEVERITY_CODE", code));
}

void _qz_LOG_log_entry_imp::set_reason_code(int code) { add_attrib_4("REASON_CODE", code); }

void _qz_LOG_log_entry_imp::set_reason_code_source(unsigned int code) { add_attrib_4u("REASON_CODE_SOURCE", code); }

const char* _qz_LOG_log_entry_imp::get_computer_info() const { return get_attrib_mbstr("COMPUTER_NAME"); }

unsigned short _qz_LOG_log_entry_imp::get_product_code() const { return get_attrib_2u("PRODUCT_CODE"); }

unsigned short _qz_LOG_log_entry_imp::get_product_platform_code() const {
  return get_attrib_2u("PRODUCT_PLATFORM_CODE");
}

unsigned int _qz_LOG_log_entry_imp::get_product_language_code() const { return get_attrib_4u("PRODUCT_LANGUAGE_CODE"); }

const char* _qz_LOG_log_entry_imp::get_product_version() const { return get_attrib_mbstr("PRODUCT_VERSION"); }

unsigned int _qz_LOG_log_entry_imp::get_component_code() const { return get_attrib_4u("COMPONENT_CODE"); }

unsigned char _qz_LOG_log_entry_imp::get_severity_code() const { return get_attrib_1u("SEVERITY_CODE"); }

int _qz_LOG_log_entry_imp::get_reason_code() const { return get_attrib_4("REASON_CODE"); }

unsigned int _qz_LOG_log_entry_imp::get_reason_code_source() const { return get_attrib_4u("REASON_CODE_SOURCE"); }

bool _qz_LOG_log_entry_imp::add_product_specific_attribute_definition(unsigned int entry_id, const char* name,
                                                                      qz_AttributeType type) {
  // One more code than there are types is let through; callers rely on it.
  constexpr int kHighestAcceptedType = 25;
  if (name == nullptr || type < 0 || type > kHighestAcceptedType) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, invalid argument\n");
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  const auto code = static_cast<unsigned char>(type);
  unsigned char known_type = 0;
  if (entry_id == 0) {
    if (_qz_LOG_log_definition::get_global_attr_info_by_name(name, known_type)) return false;
    _qz_LOG_log_definition::add_global_attr_info(name, code);
    return true;
  }
  QZ_DEBUG_RECORD(2, kEntrySource,
                  "%s:%d _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, id=%d, name=%s, type=%d \n",
                  entry_id, name, type);
  const DefinitionRef definition = qz_LOG_LogConfig::GetDefinitionTable()->acquire_entry(entry_id);
  if (!definition) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::add_product_specific_attribute_definition, entry id is invalid\n");
    throw_entry_not_found();
  }
  if (definition->get_attr_info_by_name(name) != nullptr) return false;
  definition->add_attr_info(name, code, false, nullptr);
  return true;
}

void _qz_LOG_log_entry_imp::throw_not_initialized() {
  throw QZX_logging_misc("_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized", 0);
}

void _qz_LOG_log_entry_imp::notice_out_of_range(const char* name) const {
  if (qz_LOG_LogConfig::GetActionOutOfRange() == QZ_OUT_OF_RANGE_CUT) return;
  qz_String text(name);
  text += " Attribute value is out of range under Entry ID ";
  throw_with_id<QZX_logging_invalid_attribute_value>(text.c_str());
}

void _qz_LOG_log_entry_imp::throw_invalid_name(const char* name) const {
  qz_String text(name);
  text += "is an invalid attibute under Entry ID ";
  throw_with_id<QZX_logging_invalid_attribute_name>(text.c_str());
}
