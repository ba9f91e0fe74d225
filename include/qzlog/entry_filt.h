#ifndef QZLOG_ENTRY_FILT_H
#define QZLOG_ENTRY_FILT_H

#include "qzlog/export.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"

/// Decides for a filter whether an entry is wanted. What it throws reaches the caller of check_entry.
typedef bool (*qz_LOG_EntryFilterCallback)(unsigned entry_id, unsigned property_mask, unsigned log_level,
                                           const qz_LOG_LogEntry& entry, void* user_data);

/// Tells which entries are wanted, by a callback, an inclusive range of levels (0 to 9, which is the most important:
/// see qz_LOG_LogEntry) and a property mask. The range and the mask can be overridden by the configuration source
/// (qz_LOG_LogConfig::SetConfigurationSource) in the filter's section or in the section "global".
///
/// Plain data that the caller fills, in the order of the fields:
///   _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "app", false, false};
/// The last two are results of check_entry and need no initial value.
///
/// An entry whose property mask has bit 26 (0x4000000) is a debug entry. While the key "DebugEnabled" is not 0, debug
/// entries pass the callback and the mask whatever these say, but never the range of levels.
///
/// check_entry writes the two result fields although it is const: one thread uses one filter at a time.
class QZLOG_EXPORT _qz_LOG_entry_filter {
 public:
  qz_LOG_EntryFilterCallback callback;  ///< null: no callback
  void* user_data;                      ///< handed to the callback
  unsigned property_mask;               ///< an entry passes when it shares a bit; key "PropertyMask"
  unsigned log_level_low;               ///< key "LogLevelLow", for debug entries also "DebugLogLevelLow"
  unsigned log_level_high;              ///< key "LogLevelHigh", for debug entries also "DebugLogLevelHigh"
  const char* section;                  ///< of the configuration source; not owned
  mutable bool debug_enabled;           ///< result: "DebugEnabled" was found and not 0
  mutable bool debug_entry;             ///< result: the entry is a debug entry

  enum : unsigned { _DEBUG_ENTRY_MASK = 0x4000000 };

  /// Stores both bounds, of which none may be above 9: otherwise QZX_logging_invalid_log_level is thrown and nothing
  /// changes. A low bound above the high one is accepted; nothing passes then. Configured bounds are not checked.
  void set_filter_log_level(unsigned low, unsigned high);

  /// True when the entry passes callback, levels and mask, in this order; the first that fails ends the check. Without
  /// a source or a key the filter's own values count.
  bool check_entry(const qz_LOG_LogEntry& entry) const {
    if (callback != nullptr || qz_LOG_LogConfig::_has_configuration_source()) return _check_entry_in_stages(entry);
    // Most entries are refused by their level, so this much is decided without a call.
    const _qz_LOG_entry_head& head = *entry.head_;
    debug_entry = (head.property_mask & _DEBUG_ENTRY_MASK) != 0;
    debug_enabled = false;
    return log_level_low <= head.log_level && head.log_level <= log_level_high &&
           (head.property_mask & property_mask) != 0;
  }

  /// The same, always by way of the three stages.
  bool _check_entry_in_stages(const qz_LOG_LogEntry& entry) const;

  /// The three stages alone. The first and the last rely on the result fields that a check_entry left; the second looks
  /// at the entry's own mask.
  bool _check_entry_by_callback(const qz_LOG_LogEntry& entry) const;
  bool _check_entry_by_log_level(const _qz_LOG_log_entry_imp& entry) const;
  bool _check_entry_by_property_mask(const _qz_LOG_log_entry_imp& entry) const;
};

#endif  // QZLOG_ENTRY_FILT_H
