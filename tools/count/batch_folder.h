#ifndef QZLOG_TOOLS_COUNT_BATCH_FOLDER_H
#define QZLOG_TOOLS_COUNT_BATCH_FOLDER_H

#include <string>
#include <vector>

#include "tools/count/count_batch.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/file_lock.h"

namespace qzlog_tool {

/// The folder where collectors write batches, each in a file of its own, NAME.counts, that appears as a whole, and
/// where these are folded into one, folded.counts.
class BatchFolder {
 public:
  static constexpr const char* kFolded = "folded.counts";

  /// Makes it where `may_make` and it is not there. Throws CommandError (cannot run), here and below.
  BatchFolder(std::string path, bool may_make);

  /// On the disk when it returns.
  void write_new(const CountBatch& batch);
  /// Replaces folded.counts, in one step.
  void write_folded(const CountBatch& batch) const;
  /// Names of batches in their order, folded.counts first.
  std::vector<std::string> names() const;
  /// For a file that is damaged the error names it and the line.
  CountBatch read(const std::string& name) const;
  void remove(const std::string& name) const;

  const std::string& path() const noexcept { return path_; }
  std::string path_of(const std::string& name) const;
  /// Of the open folder, for a lock: who folds is alone.
  int descriptor() const noexcept { return folder_.get(); }

 private:
  void write(const std::string& name, const CountBatch& batch) const;

  std::string path_;
  FileDescriptor folder_;
  std::string writer_;  // the beginning of the names of batches that this object writes
  unsigned long written_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_BATCH_FOLDER_H
