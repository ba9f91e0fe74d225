#include "config/configuration_source.h"

#include <atomic>
#include <new>

#include "foundation/allocate.h"
#include "foundation/cache_line.h"
#include "foundation/thread_instance.h"

/// What one thread uses. Claims are made when a thread finds none that is free, and never destroyed: whoever replaces
/// the source goes through all of them.
struct alignas(qz_kCacheLine) _qz_LOG_source_claim {
  std::atomic<const _qz_LOG_configuration*> noted{nullptr};
  std::atomic<bool> is_taken{true};
  _qz_LOG_source_claim* next = nullptr;
};

namespace {

using Claim = _qz_LOG_source_claim;
using Source = _qz_LOG_configuration;

// A thread notes a source and then looks whether it is still current; who replaces it does so and then looks for notes.
// Both need the one order of all accesses that is the default.
constinit std::atomic<Source*> current{nullptr};
constinit std::atomic<Claim*> claims{nullptr};
constinit std::atomic<Source*> retired{nullptr};  // a list by next_retired

Claim* find_free_claim() noexcept {
  for (Claim* claim = claims.load(); claim != nullptr; claim = claim->next) {
    bool is_taken = false;
    if (claim->is_taken.compare_exchange_strong(is_taken, true)) return claim;
  }
  return nullptr;
}

Claim* take_claim() {
  if (Claim* const claim = find_free_claim()) return claim;
  Claim* const claim = qz_new<Claim>();
  claim->next = claims.load();
  while (!claims.compare_exchange_weak(claim->next, claim)) {
  }
  return claim;
}

bool is_noted(const Source* source) noexcept {
  for (const Claim* claim = claims.load(); claim != nullptr; claim = claim->next) {
    if (claim->noted.load() == source) return true;
  }
  return false;
}

void retire(Source* source) noexcept {
  source->next_retired = retired.load();
  while (!retired.compare_exchange_weak(source->next_retired, source)) {
  }
}

/// What was taken from the list is this thread's alone; what is still used goes back.
void destroy_unused() noexcept {
  for (Source* source = retired.exchange(nullptr); source != nullptr;) {
    Source* const next = source->next_retired;
    if (is_noted(source)) {
      retire(source);
    } else {
      delete source;
    }
    source = next;
  }
}

void release_claim(Claim& claim) noexcept {
  claim.noted.store(nullptr);
  claim.is_taken.store(false);
  destroy_unused();
}

Source* note_current(Claim& claim) noexcept {
  Source* source = current.load(std::memory_order_acquire);
  if (claim.noted.load(std::memory_order_relaxed) == source) [[likely]]
    return source;
  for (;;) {
    claim.noted.store(source);
    Source* const now = current.load();
    if (now == source) return source;
    source = now;
  }
}

/// A thread's own claim.
class ThreadClaim : public qz_UTIL_no_inadvertant_copies {
 public:
  ThreadClaim() : claim_(*take_claim()) {}
  ~ThreadClaim() { release_claim(claim_); }
  Claim& claim() const { return claim_; }

 private:
  Claim& claim_;
};

using ThreadClaims = qz_ThreadInstance<ThreadClaim>;

/// For a thread that is not over.
Claim& make_thread_claim() {
  try {
    return ThreadClaims::make().claim();
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

}  // namespace

_qz_LOG_configuration* current_configuration_source() {
  if (const ThreadClaim* const own = ThreadClaims::find()) [[likely]]
    return note_current(own->claim());
  if (!has_configuration_source() || ThreadClaims::is_over()) return current.load();
  return note_current(make_thread_claim());
}

void replace_configuration_source(std::unique_ptr<_qz_LOG_configuration> source) noexcept {
  if (const ThreadClaim* const own = ThreadClaims::find()) own->claim().noted.store(nullptr);
  if (Source* const before = current.exchange(source.release())) retire(before);
  destroy_unused();
}

bool has_configuration_source() noexcept { return current.load() != nullptr; }

qz_ConfigurationUse::qz_ConfigurationUse() {
  if (ThreadClaims::is_over() && has_configuration_source()) [[unlikely]]
    borrowed_ = take_claim();
  source_ = borrowed_ != nullptr ? note_current(*borrowed_) : current_configuration_source();
}

void qz_ConfigurationUse::give_back() noexcept { release_claim(*borrowed_); }
