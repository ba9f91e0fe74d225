#include "qzlog/entry_filt.h"

#include <cstddef>

#include "config/configuration_source.h"
#include "config/logconf.h"
#include "entry/logentry_i.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"

using namespace qzlog;

namespace {

bool is_debug_entry(unsigned property_mask) { return (property_mask & _qz_LOG_entry_filter::_DEBUG_ENTRY_MASK) != 0; }

/// What the configuration source, where there is one, says for a section. Made anew for each stage: a filter's callback
/// may change the source.
class ConfiguredValues {
 public:
  explicit ConfiguredValues(const char* section)
      : section_(section), values_(source_ ? source_->get_filter_values(section) : nullptr) {}

  /// Replaces `value` by what is configured for the key, if anything is.
  void replace(FilterKey key, unsigned& value) const {
    if (values_ != nullptr) {
      values_->get(key, value);
    } else if (source_) {
      source_->get_integer_value(section_, kFilterKeyNames[static_cast<std::size_t>(key)], value);
    }
  }

 private:
  ConfigurationUse source_;
  const char* section_;
  const FilterValues* values_;
};

}  // namespace

void _qz_LOG_entry_filter::set_filter_log_level(unsigned low, unsigned high) {
  if (low > LOG_LEVEL_HIGH || high > LOG_LEVEL_HIGH) {
    throw QZX_logging_invalid_log_level("_qz_LOG_entry_filter::set_filter_log_level():  illegal log level specified.",
                                        0);
  }
  log_level_low = low;
  log_level_high = high;
}

bool _qz_LOG_entry_filter::_check_entry_in_stages(const qz_LOG_LogEntry& entry) const {
  debug_entry = is_debug_entry(entry.GetPropertyMask());
  unsigned enabled = 0;
  ConfiguredValues(section).replace(FilterKey::kDebugEnabled, enabled);
  debug_enabled = enabled != 0;
  return _check_entry_by_callback(entry) && _check_entry_by_log_level(*entry.implementation_) &&
         _check_entry_by_property_mask(*entry.implementation_);
}

bool _qz_LOG_entry_filter::_check_entry_by_callback(const qz_LOG_LogEntry& entry) const {
  if ((debug_entry && debug_enabled) || callback == nullptr) return true;
  return callback(entry.GetEntryID(), entry.GetPropertyMask(), entry.GetLogLevel(), entry, user_data);
}

bool _qz_LOG_entry_filter::_check_entry_by_log_level(const _qz_LOG_log_entry_imp& entry) const {
  const ConfiguredValues configured(section);
  unsigned low = log_level_low;
  unsigned high = log_level_high;
  configured.replace(FilterKey::kLogLevelLow, low);
  configured.replace(FilterKey::kLogLevelHigh, high);
  if (is_debug_entry(entry.get_property_mask())) {
    configured.replace(FilterKey::kDebugLogLevelLow, low);
    configured.replace(FilterKey::kDebugLogLevelHigh, high);
  }
  return low <= entry.get_log_level() && entry.get_log_level() <= high;
}

bool _qz_LOG_entry_filter::_check_entry_by_property_mask(const _qz_LOG_log_entry_imp& entry) const {
  // Without a source the bypass of debug entries does not count either: it is switched on by the source.
  if (debug_entry && debug_enabled && has_configuration_source()) return true;
  unsigned mask = property_mask;
  ConfiguredValues(section).replace(FilterKey::kPropertyMask, mask);
  return (entry.get_property_mask() & mask) != 0;
}
