#ifndef QZLOG_BENCH_ENTRY_ATTRIBUTES_H
#define QZLOG_BENCH_ENTRY_ATTRIBUTES_H

#include <cstddef>
#include <utility>

#include <qzlog.h>

#include "bench/workloads.h"

namespace qzlog_bench {

inline constexpr unsigned kLogLevel = 3;

/// Calls the add method of one type.
template <qz_AttributeType kType, typename Value>
void add_attribute(qz_LOG_LogEntry& entry, const char* name, const Value& value) {
  if constexpr (kType == TypeUInt1) {
    entry.AddAttrib1u(name, value);
  } else if constexpr (kType == TypeUInt2) {
    entry.AddAttrib2u(name, value);
  } else if constexpr (kType == TypeSInt2) {
    entry.AddAttrib2(name, value);
  } else if constexpr (kType == TypeUInt4) {
    entry.AddAttrib4u(name, value);
  } else if constexpr (kType == TypeSInt4) {
    entry.AddAttrib4(name, value);
  } else if constexpr (kType == TypeFloat) {
    entry.AddAttribFloat8(name, value);
  } else if constexpr (kType == TypeTimestamp) {
    entry.AddAttribTime(name, value);
  } else if constexpr (kType == TypeMBChar64) {
    entry.AddAttribMBStr(name, value);
  } else {
    static_assert(kType == TypeChar32 || kType == TypeChar64);
    entry.AddAttribStr(name, value);
  }
}

template <typename Workload, std::size_t... kIndex>
void add_attributes(qz_LOG_LogEntry& entry, const Workload& workload, std::index_sequence<kIndex...>) {
  const auto values = workload.values();
  (add_attribute<Workload::kFields[kIndex].type>(entry, Workload::kFields[kIndex].name, std::get<kIndex>(values)), ...);
}

/// Adds all attributes of a workload, in the order of its fields.
template <typename Workload>
void add_attributes(qz_LOG_LogEntry& entry, const Workload& workload) {
  add_attributes(entry, workload, std::make_index_sequence<Workload::kFields.size()>());
}

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_ENTRY_ATTRIBUTES_H
