#ifndef QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H
#define QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H

#include <cstddef>
#include <string_view>

#include "foundation/hashing.h"
#include "foundation/qz_libc.h"

namespace qzlog {

/// A wanted attribute name, hashed once however many tables are then asked for it. Does not own the text.
struct AttributeName {
  explicit AttributeName(const char* name)
      : text(name), length(static_cast<unsigned>(QZ_strlen(name))), hash(my_hashcode(name, length)) {}

  const char* text;
  unsigned length;
  unsigned hash;  ///< my_hashcode
};

/// A known name of attributes or of an event: one object for each text, so that two of them are equal when they are the
/// same. Definitions repeat few names many times; the objects live as long as the process.
class KnownName {
 public:
  /// The object of a text, made when it is the first to ask. Any thread. Throws QZX_memory_alloc.
  static const KnownName* of(const char* text);

  const char* text() const { return text_; }
  /// The name as a text of JSON, with its quotes; the same may be read behind it.
  std::string_view json_text() const { return json_key_.substr(1, json_key_.size() - 2); }
  /// The name as the key of a JSON object's member that follows another one: `,"NAME":`, behind which kJsonKeyPadding
  /// bytes may be read. What of the name is not UTF-8 became replacement characters.
  std::string_view json_key() const { return json_key_; }
  static constexpr std::size_t kJsonKeyPadding = 16;
  /// my_hashcode
  unsigned hash() const { return hash_; }
  bool equals(const AttributeName& name) const { return hash_ == name.hash && QZ_strcmp(text_, name.text) == 0; }

 private:
  friend class NameRegistry;
  KnownName(const char* text, unsigned hash, std::string_view json_key)
      : hash_(hash), text_(text), json_key_(json_key) {}

  unsigned hash_;
  const char* text_;
  std::string_view json_key_;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H
