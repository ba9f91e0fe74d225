#ifndef QZLOG_CONFIG_FILTER_VALUES_H
#define QZLOG_CONFIG_FILTER_VALUES_H

#include <cstddef>
#include <iterator>

namespace qzlog {

/// The keys of a configuration source that an entry filter asks for.
enum class FilterKey {
  kDebugEnabled,
  kPropertyMask,
  kLogLevelLow,
  kLogLevelHigh,
  kDebugLogLevelLow,
  kDebugLogLevelHigh
};

constexpr const char* kFilterKeyNames[] = {"DebugEnabled", "PropertyMask",     "LogLevelLow",
                                           "LogLevelHigh", "DebugLogLevelLow", "DebugLogLevelHigh"};
constexpr std::size_t kFilterKeyCount = std::size(kFilterKeyNames);

/// The values of a section for these keys, as far as there are any.
class FilterValues {
 public:
  /// False, with `value` untouched, when there is none.
  bool get(FilterKey key, unsigned& value) const {
    const auto index = static_cast<std::size_t>(key);
    if (present_[index]) value = values_[index];
    return present_[index];
  }

  void set(FilterKey key, unsigned value) {
    const auto index = static_cast<std::size_t>(key);
    values_[index] = value;
    present_[index] = true;
  }

  /// Takes from `fallback` what is missing.
  void complete_from(const FilterValues& fallback) {
    for (std::size_t index = 0; index < kFilterKeyCount; ++index) {
      if (!present_[index] && fallback.present_[index]) set(static_cast<FilterKey>(index), fallback.values_[index]);
    }
  }

 private:
  unsigned values_[kFilterKeyCount] = {};
  bool present_[kFilterKeyCount] = {};
};

}  // namespace qzlog

#endif  // QZLOG_CONFIG_FILTER_VALUES_H
