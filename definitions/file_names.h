#ifndef QZLOG_DEFINITIONS_FILE_NAMES_H
#define QZLOG_DEFINITIONS_FILE_NAMES_H

#include <atomic>
#include <memory>

#include "definitions/event_names.h"
#include "foundation/counted_ref.h"
#include "foundation/locks.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// The names section of one open definition file, read when it is asked for the first time. Shared by reference: the
/// definitions and global attributes of the file, which outlive its being open, answer from it. Any thread may ask.
class FileNames : public qz_UTIL_no_inadvertant_copies {
 public:
  /// The descriptor of the file, which close() is told of before it is closed.
  explicit FileNames(int descriptor) : descriptor_(descriptor) {}

  /// What the section says; nothing where the file has none or a damaged one. QZX_memory_alloc without memory: the next
  /// call tries again, as it does when the file cannot be read, which gives EventNames::unreadable().
  const EventNames& get() const {
    const EventNames* const names = names_.load(std::memory_order_acquire);
    return names != nullptr ? *names : load();
  }
  /// Whether get() answers the same from now on.
  bool is_loaded() const { return names_.load(std::memory_order_acquire) != nullptr; }

  /// The descriptor is about to be closed. Reads the section first, when somebody else holds a reference.
  void close() noexcept;

  void add_reference() { references_.fetch_add(1, std::memory_order_relaxed); }
  /// Gives up a reference; the last one destroys the object.
  void release() {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  const EventNames& load() const;
  /// Under the lock; false when the file cannot be read.
  bool read() const;
  /// Null for no names. Always true.
  bool keep(std::unique_ptr<const EventNames> names) const;

  std::atomic<unsigned> references_{1};
  mutable std::atomic<const EventNames*> names_{nullptr};
  mutable std::unique_ptr<const EventNames> owned_;
  mutable Mutex mutex_;  // held while the file is read, and while it is closed
  int descriptor_;
};

using FileNamesRef = CountedRef<FileNames>;

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_FILE_NAMES_H
