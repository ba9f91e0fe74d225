#include "definitions/attribute_name.h"

#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "foundation/locks.h"
#include "lines/json_escape.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

/// Writes KnownName::json_key() and returns its length, or only that when there is no `target`.
std::size_t write_json_key(const AttributeName& name, char* target) {
  std::size_t size = 0;
  const auto write = [&](const char* piece, std::size_t count) {
    if (target != nullptr) std::memcpy(target + size, piece, count);
    size += count;
  };
  write(",\"", 2);
  for (std::size_t at = 0; at < name.length;) {
    char piece[kMaxJsonPiece];
    const JsonPiece written = write_json_piece(name.text + at, name.length - at, piece);
    write(piece, written.written);
    at += written.taken;
  }
  write("\":", 2);
  return size;
}

}  // namespace

/// The known names of the process, never released: entries may outlive every static object. Texts are stored before
/// their objects are entered, so that running out of memory leaves nothing half known.
class NameRegistry {
 public:
  const KnownName* find_or_add(const char* text) {
    const AttributeName wanted(text);
    const MutexSentry lock(mutex_);
    if (names_ == nullptr) names_ = new Names;
    const auto found = names_->find(std::string_view(text, wanted.length));
    return found != names_->end() ? found->second.get() : add(wanted);
  }

 private:
  const KnownName* add(const AttributeName& wanted) {
    // The texts stand behind their object.
    const std::size_t text_size = wanted.length + 1U;
    const std::size_t key_size = write_json_key(wanted, nullptr);
    void* const storage = ::operator new(sizeof(KnownName) + text_size + key_size + KnownName::kJsonKeyPadding);
    char* const text = static_cast<char*>(storage) + sizeof(KnownName);
    char* const json_key = text + text_size;
    QZ_memcpy(text, wanted.text, text_size);
    write_json_key(wanted, json_key);
    std::memset(json_key + key_size, 0, KnownName::kJsonKeyPadding);
    Owned name(new (storage) KnownName(text, wanted.hash, std::string_view(json_key, key_size)));
    return names_->emplace(std::string_view(text, wanted.length), std::move(name)).first->second.get();
  }

  struct Release {
    void operator()(KnownName* name) const { ::operator delete(name); }
  };
  using Owned = std::unique_ptr<KnownName, Release>;

  using Names = std::unordered_map<std::string_view, Owned>;

  Mutex mutex_;
  Names* names_ = nullptr;
};

namespace {
constinit NameRegistry known_names;
}

const KnownName* KnownName::of(const char* text) try {
  return known_names.find_or_add(text);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

}  // namespace qzlog
