#ifndef QZLOG_DEFINITIONS_DEFINITION_FORMAT_H
#define QZLOG_DEFINITIONS_DEFINITION_FORMAT_H

#include <cstddef>
#include <cstdint>

/// Constants of the definition file, for the library, which reads it, and the tools, which write and show it. Integers
/// are 4 bytes, big-endian; a string is its length, terminating zero byte counted, and its bytes, or the length 0
/// alone; offsets count from the start of the file.
namespace qzlog::ldf {

inline constexpr std::uint32_t kMagic = 0x2E4C4446;  // ".LDF"

// The header, at the start of the file.
inline constexpr std::size_t kHeaderSize = 128;
inline constexpr std::size_t kVersionTagOffset = 16;
inline constexpr std::size_t kVersionTagSize = 8;
inline constexpr std::size_t kGlobalCountOffset = 40;
inline constexpr std::size_t kGlobalOffsetOffset = 44;
inline constexpr std::size_t kEntryCountOffset = 48;
inline constexpr std::size_t kEntryMapOffsetOffset = 56;

inline constexpr std::size_t kMapPairSize = 8;        // an entry ID and the offset of its record
inline constexpr std::uint32_t kTypeCodeMask = 0xFF;  // readers keep a type code's low 8 bits
inline constexpr std::size_t kMostElements = 255;     // of a list: readers count in 8 bits, which wrap

}  // namespace qzlog::ldf

#endif  // QZLOG_DEFINITIONS_DEFINITION_FORMAT_H
