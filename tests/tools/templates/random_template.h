#ifndef QZLOG_TESTS_TOOLS_TEMPLATES_RANDOM_TEMPLATE_H
#define QZLOG_TESTS_TOOLS_TEMPLATES_RANDOM_TEMPLATE_H

#include <iterator>
#include <string>

#include "tests/support/seeded_random.h"

namespace qz_test {

/// A message as a source may have it: some references to Name, Count and When, between whatever is special to a path.
inline std::string random_template(RandomNumbers& random) {
  const char* const kPieces[] = {"a", " ", "'", "''",    "{{", "}}", "é",       "漢",         "\"",      "#",
                                 "|", ",", "0", "{{0}}", "\\", "\n", "{Name} ", "{Count:P} ", "{When} ", " {Name}."};
  std::string text;
  for (long long pieces = random.between(0, 11); pieces > 0; --pieces)
    text += kPieces[random.below(std::size(kPieces))];
  return text;
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_TOOLS_TEMPLATES_RANDOM_TEMPLATE_H
