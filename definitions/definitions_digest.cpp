#include "definitions/definitions_digest.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "definitions/names_trailer.h"
#include "foundation/allocate.h"
#include "foundation/locks.h"
#include "foundation/qz_libc.h"
#include "foundation/sha256.h"

namespace qzlog {

namespace {

constexpr std::size_t kMaxText = 2 * kShortDigestDigits + 1;

/// A text that was handed out. It is never released: who writes lines may hold it while other files are loaded.
struct KeptText {
  char text[kMaxText + 1] = {};
  const KeptText* next = nullptr;
};

constinit Mutex kept_mutex;
constinit const KeptText* kept_texts = nullptr;  // guarded by kept_mutex

const char* keep(const char* text) {
  const MutexSentry lock(kept_mutex);
  for (const KeptText* kept = kept_texts; kept != nullptr; kept = kept->next) {
    if (std::strcmp(kept->text, text) == 0) return kept->text;
  }
  auto* const added = new_object<KeptText>();
  std::strcpy(added->text, text);
  added->next = kept_texts;
  kept_texts = added;
  return added->text;
}

long long size_of(std::FILE* file) { return QZ_fseek(file, 0, SEEK_END) == 0 ? QZ_ftell(file) : -1; }

/// Writes kShortDigestDigits digits. False when the file cannot be read.
bool write_digest(std::FILE* file, char* target) {
  long long left = size_of(file);
  if (left < 0) return false;
  left = digested_bytes(file, left);
  if (left < 0 || QZ_fseek(file, 0, SEEK_SET) != 0) return false;
  Sha256 hash;
  char bytes[4096];
  while (left > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<long long>(left, sizeof(bytes)));
    if (std::fread(bytes, 1, wanted, file) != wanted) return false;
    hash.add(bytes, wanted);
    left -= static_cast<long long>(wanted);
  }
  write_short_digest(hash.digest(), target);
  return true;
}

bool write_digests(std::FILE* std_file, std::FILE* aux_file, char* target) {
  if (std_file == nullptr || !write_digest(std_file, target)) return false;
  if (aux_file == nullptr) return true;
  target[kShortDigestDigits] = '+';
  return write_digest(aux_file, target + kShortDigestDigits + 1);
}

}  // namespace

long long digested_bytes(std::FILE* file, long long size) {
  char bytes[ldf::kTrailerSize];
  if (size < static_cast<long long>(sizeof bytes)) return size;
  if (QZ_fseek(file, size - static_cast<long long>(sizeof bytes), SEEK_SET) != 0) return -1;
  if (std::fread(bytes, 1, sizeof bytes, file) != sizeof bytes) return -1;
  const auto trailer = read_names_trailer({bytes, sizeof bytes}, static_cast<std::uint64_t>(size));
  return trailer ? trailer->offset : size;
}

const char* DefinitionsDigest::make(std::FILE* std_file, std::FILE* aux_file) {
  if (const char* const made = find()) return made;
  char text[kMaxText + 1] = {};
  // A file that cannot be read now is not read again for each line.
  const char* const kept = write_digests(std_file, aux_file, text) ? keep(text) : "";
  text_.store(kept, std::memory_order_release);
  return kept;
}

}  // namespace qzlog
