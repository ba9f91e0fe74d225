#ifndef QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H
#define QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H

#include "foundation/hashing.h"
#include "foundation/qz_libc.h"

/// A wanted attribute name, hashed once however many tables are then asked for it. Does not own the text.
struct _qz_LOG_attribute_name {
  explicit _qz_LOG_attribute_name(const char* name)
      : text(name), length(static_cast<unsigned>(QZ_strlen(name))), hash(my_hashcode(name, length)) {}
  _qz_LOG_attribute_name(const char* name, unsigned name_length, unsigned name_hash)
      : text(name), length(name_length), hash(name_hash) {}

  const char* text;
  unsigned length;
  unsigned hash;  ///< my_hashcode
};

#endif  // QZLOG_DEFINITIONS_ATTRIBUTE_NAME_H
