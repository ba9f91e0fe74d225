#ifndef QZLOG_BENCH_GENERATED_DEFINITIONS_H
#define QZLOG_BENCH_GENERATED_DEFINITIONS_H

#include <cstddef>
#include <string>
#include <vector>

#include "bench/workloads.h"

namespace qzlog_bench {

/// Compiled definition files too large or too uniform to be written by hand. A file is made when it is first asked for
/// and removed at the end of the program; each function returns its path.

/// The IDs of generated entries are counted from here; none below is defined.
inline constexpr unsigned kFirstGeneratedId = 100000;

/// So many entries with two attributes.
std::string definitions_with_ids(unsigned count);

/// So many entries with the attributes of workload A and a message of their own, see `message_of`.
std::string definitions_like_a(unsigned count);
/// The message of one of them with the values of workload A.
std::string text_like_a(unsigned entry_id);
std::string icu_text_like_a(unsigned entry_id);

/// One entry, with so many attributes of the type UInt4, all in all.
std::string definitions_with_attributes(unsigned count);
/// Their names, by index.
std::string generated_attribute_name(unsigned index);

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_GENERATED_DEFINITIONS_H
