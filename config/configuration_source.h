#ifndef QZLOG_CONFIG_CONFIGURATION_SOURCE_H
#define QZLOG_CONFIG_CONFIGURATION_SOURCE_H

#include <atomic>
#include <memory>

#include "config/logconf.h"
#include "foundation/no_copies.h"

namespace qzlog {

struct SourceClaim;

/// The process's configuration source, replaced while threads use it: no thread waits for another, nor does the child
/// of a fork for a thread that it does not have.
///
/// Each thread has a claim, in which it notes the source that it uses; what is noted is not destroyed. A thread that
/// finds its note still true, which it knows from a copy, has nothing to write, so lookups of several threads share no
/// memory that anyone writes. A source that was replaced is destroyed by the first replacement, or end of a thread,
/// that finds no note of it; so there are never more of them than threads. The current one and the claims are left at
/// the process's exit.

/// The current source, or null, for the calling thread: usable until this thread next calls this or
/// replace_configuration_source, or ends. Without memory for a first claim QZX_memory_alloc is thrown.
/// In a thread whose thread-local objects are destroyed already it is usable only until another thread replaces it;
/// ConfigurationUse does not have that limit.
_qz_LOG_configuration* current_configuration_source();

/// Makes `source`, which may be null, the current one, and retires the one before. Any thread.
void replace_configuration_source(std::unique_ptr<_qz_LOG_configuration> source) noexcept;

/// Of this unit, for the inlined code below.
extern constinit std::atomic<_qz_LOG_configuration*> current_source;
extern constinit thread_local const _qz_LOG_configuration* noted_source;  // what this thread's claim says

/// Whether there is a source; it may have changed meanwhile.
inline bool has_configuration_source() noexcept { return current_source.load() != nullptr; }

/// The current source, or null, kept usable as long as this object lives. One at a time in a thread.
class ConfigurationUse : public qz_UTIL_no_inadvertant_copies {
 public:
  ConfigurationUse() : source_(current_source.load(std::memory_order_acquire)) {
    if (source_ != noted_source) [[unlikely]]
      begin();
  }
  ~ConfigurationUse() {
    if (borrowed_ != nullptr) [[unlikely]]
      give_back();
  }

  const _qz_LOG_configuration* get() const { return source_; }
  const _qz_LOG_configuration* operator->() const { return source_; }
  explicit operator bool() const { return source_ != nullptr; }

 private:
  void begin();
  void give_back() noexcept;

  SourceClaim* borrowed_ = nullptr;  // a thread that has none of its own any more takes one for the time
  const _qz_LOG_configuration* source_;
};

}  // namespace qzlog

#endif  // QZLOG_CONFIG_CONFIGURATION_SOURCE_H
