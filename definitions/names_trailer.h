#ifndef QZLOG_DEFINITIONS_NAMES_TRAILER_H
#define QZLOG_DEFINITIONS_NAMES_TRAILER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "definitions/definition_format.h"
#include "definitions/names_format.h"
#include "foundation/crc32.h"

namespace qzlog {

/// The 4 bytes at an offset, which must be there.
constexpr std::uint32_t big_endian_int4(std::string_view bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(offset, 4)) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

/// What the last bytes of a compiled definition file say of its names section.
struct NamesTrailer {
  std::uint32_t version = 0;
  std::uint32_t offset = 0;  ///< of the section: what precedes it are the file's records
  std::uint32_t size = 0;    ///< of the section, which the trailer follows at once
  std::uint32_t checksum = 0;
};

/// Reads a trailer, the last ldf::kTrailerSize bytes of a file. None when they are no trailer, a damaged one, or one
/// that does not fit the file's size. The section's own bytes are not looked at.
constexpr std::optional<NamesTrailer> read_names_trailer(std::string_view bytes, std::uint64_t file_size) {
  if (bytes.size() != ldf::kTrailerSize || big_endian_int4(bytes, 0) != ldf::kNamesMagic) return std::nullopt;
  const std::string_view checked = bytes.substr(0, ldf::kTrailerChecksumOffset);
  if (big_endian_int4(bytes, ldf::kTrailerChecksumOffset) != crc32(checked)) return std::nullopt;
  const NamesTrailer trailer{
      big_endian_int4(bytes, ldf::kTrailerVersionOffset), big_endian_int4(bytes, ldf::kTrailerSectionOffset),
      big_endian_int4(bytes, ldf::kTrailerSizeOffset), big_endian_int4(bytes, ldf::kTrailerSectionChecksumOffset)};
  const bool fits = trailer.offset >= ldf::kHeaderSize && trailer.size >= ldf::kNamesMagicSize &&
                    trailer.size <= ldf::kLargestNames &&
                    std::uint64_t{trailer.offset} + trailer.size + ldf::kTrailerSize == file_size;
  return fits ? std::optional(trailer) : std::nullopt;
}

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_NAMES_TRAILER_H
