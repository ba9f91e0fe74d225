#include "config/configuration_source.h"

#include <atomic>
#include <new>

#include "foundation/allocate.h"
#include "foundation/cache_line.h"
#include "foundation/thread_instance.h"

namespace qzlog {

/// What one thread uses. Claims are made when a thread finds none that is free, and never destroyed: whoever replaces
/// the source goes through all of them.
struct alignas(kCacheLine) SourceClaim {
  std::atomic<const _qz_LOG_configuration*> noted{nullptr};
  std::atomic<bool> is_taken{true};
  SourceClaim* next = nullptr;
};

// A thread notes a source and then looks whether it is still current; who replaces it does so and then looks for notes.
// Both need the one order of all accesses that is the default.
constinit std::atomic<_qz_LOG_configuration*> current_source{nullptr};
constinit thread_local const _qz_LOG_configuration* noted_source = nullptr;

namespace {

using Claim = SourceClaim;
using Source = _qz_LOG_configuration;

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
  Claim* const claim = new_object<Claim>();
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
  Source* source = current_source.load();
  for (;;) {
    claim.noted.store(source);
    Source* const now = current_source.load();
    if (now == source) return source;
    source = now;
  }
}

/// A thread's own claim.
class ThreadClaim : public qz_UTIL_no_inadvertant_copies {
 public:
  ThreadClaim() : claim_(*take_claim()) {}
  ~ThreadClaim() {
    noted_source = nullptr;
    release_claim(claim_);
  }

  Source* note_current() noexcept {
    Source* const source = qzlog::note_current(claim_);
    noted_source = source;
    return source;
  }
  void note_nothing() noexcept {
    noted_source = nullptr;
    claim_.noted.store(nullptr);
  }

 private:
  Claim& claim_;
};

using ThreadClaims = ThreadInstance<ThreadClaim>;

/// Null where nothing can be kept for the thread, any more or at all.
ThreadClaim* thread_claim() {
  if (ThreadClaim* const claim = ThreadClaims::find()) return claim;
  try {
    return ThreadClaims::make();
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

}  // namespace

_qz_LOG_configuration* current_configuration_source() {
  Source* const source = current_source.load(std::memory_order_acquire);
  if (source == noted_source) return source;
  ThreadClaim* const claim = thread_claim();
  return claim != nullptr ? claim->note_current() : source;
}

void replace_configuration_source(std::unique_ptr<_qz_LOG_configuration> source) noexcept {
  if (ThreadClaim* const claim = ThreadClaims::find()) claim->note_nothing();
  if (Source* const before = current_source.exchange(source.release())) retire(before);
  destroy_unused();
}

void ConfigurationUse::begin() {
  if (ThreadClaim* const claim = thread_claim()) {
    source_ = claim->note_current();
  } else {
    borrowed_ = take_claim();
    source_ = note_current(*borrowed_);
  }
}

void ConfigurationUse::give_back() noexcept { release_claim(*borrowed_); }

}  // namespace qzlog
