#include "definitions/attribute_name.h"

#include <memory>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "foundation/locks.h"
#include "qzlog/qz_exception.h"

/// The known names of the process, never released: entries may outlive every static object. Texts are stored before
/// their objects are entered, so that running out of memory leaves nothing half known.
class KnownNames {
 public:
  const _qz_LOG_known_name* find_or_add(const char* text) {
    const _qz_LOG_attribute_name wanted(text);
    const qz_MutexSentry lock(mutex_);
    if (names_ == nullptr) names_ = new Names;
    const auto found = names_->find(std::string_view(text, wanted.length));
    return found != names_->end() ? found->second.get() : add(wanted);
  }

 private:
  const _qz_LOG_known_name* add(const _qz_LOG_attribute_name& wanted) {
    // The text stands behind its object.
    void* const storage = ::operator new(sizeof(_qz_LOG_known_name) + wanted.length + 1);
    char* const text = static_cast<char*>(storage) + sizeof(_qz_LOG_known_name);
    QZ_memcpy(text, wanted.text, wanted.length + 1U);
    Owned name(new (storage) _qz_LOG_known_name(text, wanted.hash));
    return names_->emplace(std::string_view(text, wanted.length), std::move(name)).first->second.get();
  }

  struct Release {
    void operator()(_qz_LOG_known_name* name) const { ::operator delete(name); }
  };
  using Owned = std::unique_ptr<_qz_LOG_known_name, Release>;

  using Names = std::unordered_map<std::string_view, Owned>;

  qz_Mutex mutex_;
  Names* names_ = nullptr;
};

namespace {
constinit KnownNames known_names;
}

const _qz_LOG_known_name* _qz_LOG_known_name::of(const char* text) try {
  return known_names.find_or_add(text);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}
