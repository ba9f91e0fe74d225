#ifndef QZLOG_TOOLS_COUNT_COVERED_LINES_H
#define QZLOG_TOOLS_COUNT_COVERED_LINES_H

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "tools/count/line_ranges.h"

namespace qzlog_tool {

/// Stands for a line without a writer and a number: the beginning of a SHA-256.
using LineDigest = std::array<unsigned char, 16>;

/// Which lines were counted. Takes memory for each writer, each gap in its numbers and each digest: 48 to 80 bytes.
class CoveredLines {
 public:
  bool add(std::string_view writer, std::uint64_t number) { return ranges_of(writer).add(number, number) != 0; }
  bool add(const LineDigest& digest) { return digests_.insert(digest).second; }
  /// Returns how many are new.
  std::uint64_t add(const CoveredLines& other);
  /// How many of the others it has.
  std::uint64_t count(const CoveredLines& other) const;
  /// Where nothing of the writer is, or of these numbers: they are to be in their order.
  void append(const std::string& writer, std::uint64_t first, std::uint64_t last) { writers_[writer].add(first, last); }

  std::uint64_t size() const;
  bool is_empty() const { return writers_.empty() && digests_.empty(); }
  const std::map<std::string, LineRanges, std::less<>>& writers() const { return writers_; }
  const std::set<LineDigest>& digests() const { return digests_; }
  bool operator==(const CoveredLines&) const = default;

 private:
  LineRanges& ranges_of(std::string_view writer);

  std::map<std::string, LineRanges, std::less<>> writers_;
  std::set<LineDigest> digests_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COVERED_LINES_H
