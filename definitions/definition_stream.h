#ifndef QZLOG_DEFINITIONS_DEFINITION_STREAM_H
#define QZLOG_DEFINITIONS_DEFINITION_STREAM_H

#include <cstdio>
#include <memory>
#include <utility>

#include "definitions/file_blocks.h"
#include "definitions/file_changes.h"
#include "definitions/file_names.h"
#include "foundation/allocate.h"
#include "foundation/file_handle.h"

namespace qzlog {

/// An open definition file, or none: its stream, which is read when the file is loaded, its blocks, which records come
/// from, and the names that stand in it.
class DefinitionStream {
 public:
  DefinitionStream() = default;
  /// The descriptor is the one that the stream reads from. QZX_memory_alloc.
  DefinitionStream(FileHandle file, int descriptor)
      : file_(std::move(file)), names_(new_object<FileNames>(descriptor)), records_(new_object<Records>(descriptor)) {}
  DefinitionStream(DefinitionStream&&) noexcept = default;
  DefinitionStream& operator=(DefinitionStream&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(names_, other.names_);
    std::swap(records_, other.records_);
    return *this;
  }
  ~DefinitionStream() { reset(); }

  /// Null, as the others, when there is none.
  std::FILE* get() const { return file_.get(); }
  FileNames* names() const { return names_.get(); }
  /// Only of an open file.
  FileBlocks& blocks() const { return records_->blocks; }
  /// Whether what was read of the file may not stand there any more; the blocks are forgotten then. False for no file.
  bool notice_change() const {
    if (records_ == nullptr || !records_->changes.may_have_changed()) return false;
    records_->blocks.forget();
    return true;
  }
  void reset() noexcept {
    if (names_) names_->close();
    names_ = {};
    records_.reset();
    file_.reset();
  }

 private:
  struct Records {
    explicit Records(int descriptor) : blocks(descriptor), changes(descriptor) {}
    FileBlocks blocks;
    FileChanges changes;
  };

  FileHandle file_;
  FileNamesRef names_;
  std::unique_ptr<Records> records_;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_DEFINITION_STREAM_H
