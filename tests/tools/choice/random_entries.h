#ifndef QZLOG_TESTS_TOOLS_CHOICE_RANDOM_ENTRIES_H
#define QZLOG_TESTS_TOOLS_CHOICE_RANDOM_ENTRIES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/support.h"

namespace qz_test {

struct RandomMoment {
  long long seconds = 0;
};

/// Numbers, truths, texts as they are stored, moments.
using RandomValue = std::variant<long long, double, bool, std::string, RandomMoment>;

/// An entry of kChoiceDefinitions, as plain values.
struct RandomEntry {
  unsigned id = 1;
  unsigned level = 0;
  std::optional<long long> time;
  std::string writer;
  std::optional<std::uint64_t> seq;
  std::string name;  ///< as the line has it
  std::map<std::string, RandomValue> attributes;

  unsigned mask() const { return id == 1 ? 1 : id == 2 ? 6 : 8; }
  std::string event_name() const { return id == 1 ? "DISK_FULL" : id == 2 ? "DISK_OK" : "LINK_DOWN"; }
};

RandomEntry random_entry(RandomNumbers& random);

/// What random texts are made of, character by character, as they are stored.
const std::vector<std::string>& random_characters();
std::string random_text(RandomNumbers& random);
long long random_integer(RandomNumbers& random);
long long random_moment(RandomNumbers& random);

/// The entry as writers write it.
std::string canonical_line(const RandomEntry& entry);
/// The same in some other way: other orders, blanks, escapes, times of other zones, texts in "bytes".
std::string disguised_line(const RandomEntry& entry, RandomNumbers& random);

}  // namespace qz_test

#endif  // QZLOG_TESTS_TOOLS_CHOICE_RANDOM_ENTRIES_H
