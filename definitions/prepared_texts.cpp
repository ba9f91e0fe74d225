#include "definitions/prepared_texts.h"

#include <cstddef>
#include <list>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>

#include "definitions/definition_memory.h"
#include "foundation/locks.h"
#include "foundation/never_destroyed.h"
#include "foundation/no_copies.h"

namespace qzlog {

namespace {

std::string key_of(MessagePath path, std::string_view content) {
  std::string key(1, static_cast<char>(path));
  return key.append(content);
}

/// The kept ones, the last used first.
class KeptTexts : public qz_UTIL_no_inadvertant_copies {
 public:
  PreparedMessageRef find(std::string_view key) {
    const auto found = by_key_.find(key);
    if (found == by_key_.end()) return {};
    kept_.splice(kept_.begin(), kept_, found->second);
    return PreparedMessageRef::share(found->second->prepared.get());
  }
  void add(std::string key, const PreparedMessage& prepared) {
    if (by_key_.contains(key)) return;
    kept_.push_front({std::move(key), PreparedMessageRef::share(&prepared)});
    try {
      by_key_.emplace(kept_.front().key, kept_.begin());
    } catch (const std::bad_alloc&) {
      kept_.pop_front();
      throw;
    }
    bytes_ += kept_.front().bytes();
  }
  void fit(std::size_t most_bytes) {
    while (bytes_ > most_bytes) {
      bytes_ -= kept_.back().bytes();
      by_key_.erase(kept_.back().key);
      kept_.pop_back();
    }
  }

 private:
  struct Kept {
    std::string key;
    PreparedMessageRef prepared;

    /// With the nodes of list and map.
    std::size_t bytes() const { return sizeof(Kept) + 14 * sizeof(void*) + key.capacity() + prepared->memory_bytes(); }
  };

  std::list<Kept> kept_;
  std::unordered_map<std::string_view, std::list<Kept>::iterator> by_key_;  // the keys are those of the list
  std::size_t bytes_ = 0;
};

constinit Mutex mutex;
NeverDestroyed<KeptTexts> kept_texts;  // guarded by mutex

}  // namespace

PreparedMessageRef PreparedTexts::find(MessagePath path, std::string_view content) {
  const std::string key = key_of(path, content);
  const MutexSentry lock(mutex);
  return kept_texts->find(key);
}

void PreparedTexts::keep(MessagePath path, std::string_view content, const PreparedMessage& prepared) {
  std::string key = key_of(path, content);
  const MutexSentry lock(mutex);
  kept_texts->add(std::move(key), prepared);
  kept_texts->fit(DefinitionMemory::for_texts());
}

void PreparedTexts::fit_memory() {
  const MutexSentry lock(mutex);
  kept_texts->fit(DefinitionMemory::for_texts());
}

}  // namespace qzlog
