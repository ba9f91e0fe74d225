#ifndef QZLOG_DEFINITIONS_NAMES_FORMAT_H
#define QZLOG_DEFINITIONS_NAMES_FORMAT_H

#include <cstddef>
#include <cstdint>

/// Constants of the names section, which a compiled definition file may have behind its last record. Integers are 4
/// bytes, big-endian, and strings stand as in the rest of the file, with one zero byte, their last. Readers of records
/// know nothing of the section: no offset in the file leads there.
///
/// The section is kNamesMagic and parts, each with its type, its size and so many bytes. The trailer, the file's last
/// bytes, follows it at once. Parts of other types than those below are passed over; a part that is known stands once
/// and is used up to its end.
namespace qzlog::ldf {

inline constexpr std::uint32_t kNamesMagic = 0x514E414D;  // "QNAM", where the section begins and where the trailer does
inline constexpr std::uint32_t kNamesVersion = 1;
inline constexpr std::size_t kLargestNames = std::size_t{64} << 20;  // of a section

inline constexpr std::size_t kNamesMagicSize = 4;
inline constexpr std::size_t kPartHeaderSize = 8;  // type, size

// The trailer.
inline constexpr std::size_t kTrailerSize = 24;
inline constexpr std::size_t kTrailerVersionOffset = 4;
inline constexpr std::size_t kTrailerSectionOffset = 8;  // where the section begins in the file
inline constexpr std::size_t kTrailerSizeOffset = 12;    // of the section
inline constexpr std::size_t kTrailerSectionChecksumOffset = 16;
inline constexpr std::size_t kTrailerChecksumOffset = 20;  // of the trailer's bytes before it

/// A count, and for each event its ID, its name and its summary, which may be empty. IDs rise.
inline constexpr std::uint32_t kEventsPart = 1;
inline constexpr std::size_t kSmallestEvent = 12;

/// A count, and for each marked attribute whose it is (kGlobalMark, kEntryMark), the entry's ID (0 for a global one),
/// its name and its mark (a Sensitivity, but not kKeep). They rise by owner, ID and name, byte by byte.
inline constexpr std::uint32_t kMarksPart = 2;
inline constexpr std::size_t kSmallestMark = 16;
inline constexpr std::uint32_t kGlobalMark = 0;
inline constexpr std::uint32_t kEntryMark = 1;

}  // namespace qzlog::ldf

namespace qzlog {

/// What becomes of an attribute's value when its entry is written, the stricter the larger. Readers take a mark that
/// they do not know for kDrop.
enum class Sensitivity : unsigned char { kKeep, kHash, kDrop };

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_NAMES_FORMAT_H
