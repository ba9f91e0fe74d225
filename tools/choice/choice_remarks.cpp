#include "tools/choice/choice_remarks.h"

#include <cstdint>

namespace qzlog_tool {

std::vector<std::string> choice_remarks(const EntryChoice* choice, const LineTail* tail) {
  std::vector<std::string> remarks;
  const auto add = [&remarks](const char* what, std::uint64_t count) {
    if (count != 0) remarks.push_back(what + (": " + std::to_string(count)));
  };
  if (choice != nullptr) {
    add("entries without a time, left out", choice->without_time());
    add("ranges of numbers that --unique had to forget", choice->forgotten());
  }
  if (tail != nullptr) add("lines that --tail had no memory for", tail->dropped());
  return remarks;
}

}  // namespace qzlog_tool
