#ifndef QZLOG_DEFINITIONS_DEFINITIONS_DIGEST_H
#define QZLOG_DEFINITIONS_DEFINITIONS_DIGEST_H

#include <atomic>
#include <cstdio>

#include "foundation/no_copies.h"

namespace qzlog {

/// How many bytes of a compiled definition file of `size` bytes count for its digest: those of its records. The names
/// section behind them says nothing of how entries are read. Negative when the file cannot be read.
long long digested_bytes(std::FILE* file, long long size);

/// Tells definition files apart: the first 16 hexadecimal digits of the SHA-256 of the standard file, and behind a plus
/// sign those of the auxiliary one if there is one. Made when it is asked for the first time.
class DefinitionsDigest : public qz_UTIL_no_inadvertant_copies {
 public:
  constexpr DefinitionsDigest() = default;

  /// Null while it was not made. The text lives as long as the process.
  const char* find() const noexcept { return text_.load(std::memory_order_acquire); }
  /// Makes it of the streams, which are read from their beginnings and stand anywhere afterwards; `aux_file` may be
  /// null. "" when `std_file` is null or one of them cannot be read. For one thread at a time. QZX_memory_alloc.
  const char* make(std::FILE* std_file, std::FILE* aux_file);
  /// The files have changed.
  void forget() noexcept { text_.store(nullptr, std::memory_order_release); }

 private:
  std::atomic<const char*> text_{nullptr};
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_DEFINITIONS_DIGEST_H
