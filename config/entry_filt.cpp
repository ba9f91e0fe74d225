#include "qzlog/entry_filt.h"

#include "config/logconf.h"
#include "entry/logentry_i.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"

namespace {

constexpr unsigned kDebugEntryMask = 0x4000000;

bool is_debug_entry(unsigned property_mask) { return (property_mask & kDebugEntryMask) != 0; }

/// Replaces `value` by what is configured for the key, if anything is.
bool override_value(const _qz_LOG_configuration* source, const char* section, const char* key, unsigned& value) {
  return source != nullptr && source->get_integer_value(section, key, value);
}

}  // namespace

void _qz_LOG_entry_filter::set_filter_log_level(unsigned low, unsigned high) {
  if (low > LOG_LEVEL_HIGH || high > LOG_LEVEL_HIGH) {
    throw QZX_logging_invalid_log_level("_qz_LOG_entry_filter::set_filter_log_level():  illegal log level specified.",
                                        0);
  }
  log_level_low = low;
  log_level_high = high;
}

bool _qz_LOG_entry_filter::check_entry(const qz_LOG_LogEntry& entry) const {
  debug_entry = is_debug_entry(entry.GetPropertyMask());
  unsigned enabled = 0;
  override_value(qz_LOG_LogConfig::_get_configuration_ptr(), section, "DebugEnabled", enabled);
  debug_enabled = enabled != 0;
  return _check_entry_by_callback(entry) && _check_entry_by_log_level(*entry.implementation_) &&
         _check_entry_by_property_mask(*entry.implementation_);
}

bool _qz_LOG_entry_filter::_check_entry_by_callback(const qz_LOG_LogEntry& entry) const {
  if ((debug_entry && debug_enabled) || callback == nullptr) return true;
  return callback(entry.GetEntryID(), entry.GetPropertyMask(), entry.GetLogLevel(), entry, user_data);
}

bool _qz_LOG_entry_filter::_check_entry_by_log_level(const _qz_LOG_log_entry_imp& entry) const {
  const _qz_LOG_configuration* const source = qz_LOG_LogConfig::_get_configuration_ptr();
  unsigned low = log_level_low;
  unsigned high = log_level_high;
  override_value(source, section, "LogLevelLow", low);
  override_value(source, section, "LogLevelHigh", high);
  if (is_debug_entry(entry.get_property_mask())) {
    override_value(source, section, "DebugLogLevelLow", low);
    override_value(source, section, "DebugLogLevelHigh", high);
  }
  return low <= entry.get_log_level() && entry.get_log_level() <= high;
}

bool _qz_LOG_entry_filter::_check_entry_by_property_mask(const _qz_LOG_log_entry_imp& entry) const {
  const _qz_LOG_configuration* const source = qz_LOG_LogConfig::_get_configuration_ptr();
  // Without a source the bypass of debug entries does not count either: it is switched on by the source.
  if (source != nullptr && debug_entry && debug_enabled) return true;
  unsigned mask = property_mask;
  override_value(source, section, "PropertyMask", mask);
  return (entry.get_property_mask() & mask) != 0;
}
