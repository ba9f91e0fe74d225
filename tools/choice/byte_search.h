#ifndef QZLOG_TOOLS_CHOICE_BYTE_SEARCH_H
#define QZLOG_TOOLS_CHOICE_BYTE_SEARCH_H

#include <cstddef>
#include <string_view>

namespace qzlog_tool {

/// Finds a short text in a line, sixteen places at a time: lines are too short for searches that prepare themselves.
class ByteSearch {
 public:
  /// `wanted` has two bytes or more.
  explicit ByteSearch(std::string_view wanted) : wanted_(wanted) {}

  /// Where the text stands first at `from` or behind it, or npos.
  std::size_t find_in(std::string_view text, std::size_t from) const;
  std::size_t size() const { return wanted_.size(); }

 private:
  std::string_view wanted_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_BYTE_SEARCH_H
