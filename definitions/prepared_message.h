#ifndef QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
#define QZLOG_DEFINITIONS_PREPARED_MESSAGE_H

#include <atomic>
#include <memory>

#include "foundation/no_copies.h"
#include "foundation/owned_text.h"

/// What the message subsystem makes of a message text once, to render it many times.
class _qz_LOG_prepared_message : public qz_UTIL_no_inadvertant_copies {
 public:
  virtual ~_qz_LOG_prepared_message() = default;
};

/// The ways of rendering, each with a prepared form of its own.
enum class MessagePath { kNarrow, kIcu };

/// A message text of a definition, or none, with what was prepared from it. Prepared forms live as long as the text and
/// are shared by all threads; set() must not run while other threads render.
class _qz_LOG_message_text : public qz_UTIL_no_inadvertant_copies {
 public:
  _qz_LOG_message_text() = default;
  explicit _qz_LOG_message_text(const char* text) : text_(qz_duplicate_text(text)) {}
  ~_qz_LOG_message_text() { forget_prepared(); }

  /// A copy; null for none. QZX_memory_alloc, with the text unchanged, without memory.
  void set(const char* text) {
    text_ = qz_duplicate_text(text);
    forget_prepared();
  }
  const char* get() const { return text_.get(); }

  /// Null until one was kept.
  const _qz_LOG_prepared_message* find_prepared(MessagePath path) const {
    return slot(path).load(std::memory_order_acquire);
  }
  /// Keeps a prepared form, unless another thread was first; returns the one that is kept.
  const _qz_LOG_prepared_message& keep_prepared(MessagePath path,
                                                std::unique_ptr<const _qz_LOG_prepared_message> fresh) const {
    const _qz_LOG_prepared_message* kept = nullptr;
    if (slot(path).compare_exchange_strong(kept, fresh.get(), std::memory_order_acq_rel)) kept = fresh.release();
    return *kept;
  }

 private:
  using Slot = std::atomic<const _qz_LOG_prepared_message*>;

  Slot& slot(MessagePath path) const { return prepared_[static_cast<int>(path)]; }
  void forget_prepared() {
    for (Slot& slot : prepared_) delete slot.exchange(nullptr, std::memory_order_relaxed);
  }

  qz_OwnedText text_;
  mutable Slot prepared_[2] = {};
};

#endif  // QZLOG_DEFINITIONS_PREPARED_MESSAGE_H
