#include "definitions/file_names.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "definitions/names_trailer.h"
#include "foundation/allocate.h"
#include "foundation/position_reads.h"

namespace qzlog {

namespace {

/// Null for a section of another version or with other bytes than were written.
std::unique_ptr<const EventNames> parse_section(std::unique_ptr<char[]> bytes, const NamesTrailer& trailer) {
  const bool known = trailer.version == ldf::kNamesVersion;
  if (!known || crc32({bytes.get(), trailer.size}) != trailer.checksum) return nullptr;
  return EventNames::parse(std::move(bytes), trailer.size);
}

}  // namespace

const EventNames& FileNames::load() const {
  const MutexSentry lock(mutex_);
  // Another thread may have read it since.
  if (!is_loaded() && !read()) return EventNames::unreadable();
  return *names_.load(std::memory_order_relaxed);
}

bool FileNames::read() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) return false;
  const auto file_size = static_cast<std::uint64_t>(status.st_size);
  if (file_size < ldf::kTrailerSize) return keep(nullptr);
  char last_bytes[ldf::kTrailerSize];
  if (!read_at(descriptor_, file_size - sizeof last_bytes, last_bytes, sizeof last_bytes)) return false;
  const std::optional<NamesTrailer> trailer = read_names_trailer({last_bytes, sizeof last_bytes}, file_size);
  if (!trailer) return keep(nullptr);
  std::unique_ptr<char[]> bytes(new_array<char>(trailer->size));
  if (!read_at(descriptor_, trailer->offset, bytes.get(), trailer->size)) return false;
  return keep(parse_section(std::move(bytes), *trailer));
}

bool FileNames::keep(std::unique_ptr<const EventNames> names) const {
  owned_ = std::move(names);
  names_.store(owned_ != nullptr ? owned_.get() : &EventNames::none(), std::memory_order_release);
  return true;
}

void FileNames::close() noexcept {
  const MutexSentry lock(mutex_);
  if (is_loaded() || references_.load(std::memory_order_relaxed) == 1) return;
  try {
    if (read()) return;
  } catch (const QZX_memory_alloc&) {
    // What is marked must not be written: that it cannot be known any more is no reason to take it for harmless.
  }
  names_.store(&EventNames::unreadable(), std::memory_order_release);
}

}  // namespace qzlog
