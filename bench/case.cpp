#include "bench/case.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace qzlog_bench {

void check_text(const std::string& case_name, const std::string& expected, const char* text) {
  if (expected == text) return;
  std::fprintf(stderr, "qzlog_bench: %s gives the wrong text\n  expected: %s\n  given:    %s\n", case_name.c_str(),
               expected.c_str(), text);
  std::exit(EXIT_FAILURE);
}

void report_violation(const char* what) {
  std::fprintf(stderr, "qzlog_bench: does not hold: %s\n", what);
  std::exit(EXIT_FAILURE);
}

const Case* CaseList::find(const std::string& name) const {
  const auto found = std::find_if(cases_.begin(), cases_.end(), [&](const Case& each) { return each.name == name; });
  return found != cases_.end() ? &*found : nullptr;
}

}  // namespace qzlog_bench
