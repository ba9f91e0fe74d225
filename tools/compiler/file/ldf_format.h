#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_FORMAT_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_FORMAT_H

#include <cstddef>
#include <cstdint>

/// Constants of the compiled definition file. Integers are 4 bytes, big-endian; a string is its length, terminating
/// zero byte counted, and its bytes, or the length 0 alone; offsets count from the start of the file.
namespace qzlog_compiler::ldf {

inline constexpr std::uint32_t kMagic = 0x2E4C4446;  // ".LDF"
inline constexpr std::size_t kHeaderSize = 128;
inline constexpr std::size_t kVersionTagOffset = 16;
inline constexpr std::size_t kVersionTagSize = 8;
inline constexpr std::size_t kGlobalCountOffset = 40;
inline constexpr std::size_t kGlobalOffsetOffset = 44;
inline constexpr std::size_t kEntryCountOffset = 48;
inline constexpr std::size_t kEntryMapOffsetOffset = 56;
inline constexpr std::size_t kMapPairSize = 8;
inline constexpr std::uint32_t kTypeCodeMask = 0xFF;  ///< readers keep a type code's low 8 bits

}  // namespace qzlog_compiler::ldf

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_FORMAT_H
