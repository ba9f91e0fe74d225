#include "definitions/attribute_name.h"

#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "qzlog/qz_exception.h"

/// The known names of the process. Texts are stored before their objects are entered, so that running out of memory
/// leaves nothing half known.
class KnownNames {
 public:
  const _qz_LOG_known_name* find_or_add(const char* text) {
    const _qz_LOG_attribute_name wanted(text);
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = names_.find(std::string_view(text, wanted.length));
    return found != names_.end() ? found->second.get() : add(wanted);
  }

 private:
  const _qz_LOG_known_name* add(const _qz_LOG_attribute_name& wanted) {
    // The text stands behind its object.
    void* const storage = ::operator new(sizeof(_qz_LOG_known_name) + wanted.length + 1);
    char* const text = static_cast<char*>(storage) + sizeof(_qz_LOG_known_name);
    QZ_memcpy(text, wanted.text, wanted.length + 1U);
    Owned name(new (storage) _qz_LOG_known_name(text, wanted.hash));
    return names_.emplace(std::string_view(text, wanted.length), std::move(name)).first->second.get();
  }

  struct Release {
    void operator()(_qz_LOG_known_name* name) const { ::operator delete(name); }
  };
  using Owned = std::unique_ptr<_qz_LOG_known_name, Release>;

  std::mutex mutex_;
  std::unordered_map<std::string_view, Owned> names_;
};

const _qz_LOG_known_name* _qz_LOG_known_name::of(const char* text) try {
  // Never destroyed: entries may outlive every static object.
  static KnownNames& names = *new KnownNames;
  return names.find_or_add(text);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}
