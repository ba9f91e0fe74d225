#ifndef QZLOG_TOOLS_COUNT_COUNT_MERGE_H
#define QZLOG_TOOLS_COUNT_COUNT_MERGE_H

#include <cstdint>
#include <map>
#include <string>

#include "tools/count/count_batch.h"

namespace qzlog_tool {

/// Batches as one: each line counts once, whichever they are in.
class CountMerge {
 public:
  /// Takes a batch; those that were folded come first. Of a line that is there already, with whatever count, nothing is
  /// counted. `name` is for the error, CommandError (cannot run), that two folded batches share some lines: which of
  /// the counts are theirs is not known any more.
  void add(const CountBatch& batch, const std::string& name);

  const std::map<CounterPlace, std::uint64_t>& counts() const { return counts_; }
  /// How often lines came again.
  std::uint64_t doubles() const { return doubles_; }
  /// How many lines there are.
  std::uint64_t size() const { return seen_.size(); }
  CountBatch folded() const { return {{}, counts_, seen_}; }

  /// The file of a counter with these counts. Throws CommandError (cannot run) for a count that has no room in it.
  std::string counter_bytes() const;

 private:
  void add_folded(const CountBatch& batch, const std::string& name);

  std::map<CounterPlace, std::uint64_t> counts_;
  CoveredLines seen_;
  std::uint64_t doubles_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_MERGE_H
