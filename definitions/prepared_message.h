#ifndef QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
#define QZLOG_DEFINITIONS_PREPARED_MESSAGE_H

#include <atomic>
#include <memory>

#include "foundation/no_copies.h"
#include "foundation/owned_text.h"

namespace qzlog {

/// What the message subsystem makes of a message text once, to render it many times.
class PreparedMessage : public qz_UTIL_no_inadvertant_copies {
 public:
  virtual ~PreparedMessage() = default;
};

/// The ways of rendering, each with a prepared form of its own.
enum class MessagePath { kNarrow, kIcu };

/// A message text of a definition, or none, with what was prepared from it. Prepared forms live as long as the text and
/// are shared by all threads; set() must not run while other threads render.
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
  const PreparedMessage& keep_prepared(MessagePath path, std::unique_ptr<const PreparedMessage> fresh) const {
    const PreparedMessage* kept = nullptr;
    if (slot(path).compare_exchange_strong(kept, fresh.get(), std::memory_order_acq_rel)) kept = fresh.release();
    return *kept;
  }

 private:
  using Slot = std::atomic<const PreparedMessage*>;

  Slot& slot(MessagePath path) const { return prepared_[static_cast<int>(path)]; }
  void forget_prepared() {
    for (Slot& slot : prepared_) delete slot.exchange(nullptr, std::memory_order_relaxed);
  }

  OwnedText text_;
  mutable Slot prepared_[2] = {};
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
