#ifndef QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
#define QZLOG_DEFINITIONS_PREPARED_MESSAGE_H

#include <atomic>
#include <cstddef>
#include <utility>

#include "foundation/counted_ref.h"
#include "foundation/no_copies.h"
#include "foundation/owned_text.h"
#include "foundation/prefetch.h"

namespace qzlog {

/// What the message subsystem makes of a message text once, to render it many times. Counted: all who have the text
/// share it.
class PreparedMessage : public qz_UTIL_no_inadvertant_copies {
 public:
  /// What it takes of the process's memory.
  std::size_t memory_bytes() const { return memory_bytes_; }
  /// Asks for what rendering reads beside the object itself.
  virtual void prefetch_parts() const = 0;

  void add_reference() const { references_.fetch_add(1, std::memory_order_relaxed); }
  /// Gives up a reference; the last one destroys the object.
  void release() const {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 protected:
  PreparedMessage() = default;
  virtual ~PreparedMessage() = default;
  /// For the constructor.
  void set_memory_bytes(std::size_t bytes) { memory_bytes_ = bytes; }

 private:
  mutable std::atomic<unsigned> references_{1};
  std::size_t memory_bytes_ = 0;
};

using PreparedMessageRef = CountedRef<const PreparedMessage>;

/// The ways of rendering, each with a prepared form of its own.
enum class MessagePath { kNarrow, kIcu };

/// A message text of a definition, or none, with what was prepared from it. Prepared forms are held as long as the text
/// lives and are used by all threads; set() must not run while other threads render.
class DefinitionMessage : public qz_UTIL_no_inadvertant_copies {
 public:
  DefinitionMessage() = default;
  explicit DefinitionMessage(const char* text) : text_(duplicate_text(text)) {}
  ~DefinitionMessage() { forget_prepared(); }

  /// A copy; null for none. QZX_memory_alloc, with the text unchanged, without memory.
  void set(const char* text) {
    text_ = duplicate_text(text);
    forget_prepared();
  }
  const char* get() const { return text_.get(); }

  /// Null until one was kept.
  const PreparedMessage* find_prepared(MessagePath path) const { return slot(path).load(std::memory_order_acquire); }
  /// Keeps a prepared form, unless another thread was first; returns the one that is kept.
  const PreparedMessage& keep_prepared(MessagePath path, PreparedMessageRef prepared) const {
    const PreparedMessage* kept = nullptr;
    if (!slot(path).compare_exchange_strong(kept, prepared.get(), std::memory_order_acq_rel)) return *kept;
    return *prepared.take();
  }
  /// Asks for the prepared forms, for who is to render soon; then, when these are there, for what they refer to.
  void prefetch_prepared() const {
    constexpr std::size_t kObjectBytes = 4 * kCacheLine;
    for (const MessagePath path : {MessagePath::kNarrow, MessagePath::kIcu}) {
      if (const PreparedMessage* const prepared = find_prepared(path)) prefetch(prepared, kObjectBytes);
    }
  }
  void prefetch_prepared_parts() const {
    for (const MessagePath path : {MessagePath::kNarrow, MessagePath::kIcu}) {
      if (const PreparedMessage* const prepared = find_prepared(path)) prepared->prefetch_parts();
    }
  }
  /// What the prepared forms take of the process's memory.
  std::size_t prepared_bytes() const {
    std::size_t bytes = 0;
    for (const MessagePath path : {MessagePath::kNarrow, MessagePath::kIcu}) {
      const PreparedMessage* const prepared = find_prepared(path);
      if (prepared != nullptr) bytes += prepared->memory_bytes();
    }
    return bytes;
  }

 private:
  using Slot = std::atomic<const PreparedMessage*>;

  Slot& slot(MessagePath path) const { return prepared_[static_cast<int>(path)]; }
  void forget_prepared() {
    for (Slot& slot : prepared_) PreparedMessageRef(slot.exchange(nullptr, std::memory_order_relaxed));
  }

  OwnedText text_;
  mutable Slot prepared_[2] = {};
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
