#ifndef QZLOG_TESTS_SUPPORT_LDF_FILE_H
#define QZLOG_TESTS_SUPPORT_LDF_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qz_test {

/// Definition files written byte by byte, apart from the compiler's writer, and the ways in which they get damaged.
///
///   LdfFile file{.entries = {{.id = 7, .message_text = "hello", .attributes = {{"user", TypeChar32}}}}};
///   folder.write("a.ldf", file.bytes());

/// The stored form of a number, and of a text with its terminating zero byte; the empty text has no bytes at all.
std::string int4(unsigned value);
std::string ldf_string(std::string_view text);

struct LdfAttribute {
  std::string name;
  unsigned type = 0;
  std::string redirection_name = {};
};

struct LdfSelectorMessage {
  unsigned index = 0;
  unsigned value = 0;
  std::string id = {};
  std::string text = {};
};

struct LdfEntry {
  unsigned id = 0;
  unsigned word = 0;
  unsigned mask = 0;
  std::string message_id = {};
  std::string message_text = {};
  std::string selector = {};
  std::vector<LdfAttribute> attributes = {};
  std::vector<LdfSelectorMessage> selector_messages = {};
};

/// A pair of the entry map: an ID and the position of its record in LdfFile::entries.
struct LdfPair {
  unsigned id = 0;
  std::size_t record = 0;
};

/// A number of a file whose value decides what is read, or how much of it.
struct LdfMark {
  enum Kind { kMagic, kCount, kOffset, kLength, kEntryId };
  std::size_t position;
  Kind kind;
};

/// The bytes of a file and where its parts stand.
struct LdfImage {
  std::string bytes;
  std::vector<LdfMark> marks;
  std::size_t globals_offset;
  std::size_t map_offset;
  std::vector<std::size_t> record_offsets;
};

struct LdfFile {
  std::string tag = {};  ///< up to eight bytes
  std::vector<LdfAttribute> globals = {};
  std::vector<LdfEntry> entries = {};
  std::optional<std::vector<LdfPair>> map = {};  ///< without one: every entry in order
  std::string region_order = "gmr";              ///< globals, map, records
  std::string gap = {};                          ///< bytes between the regions

  LdfImage image() const;
  std::string bytes() const { return image().bytes; }
};

/// Entries with the IDs from `first` to `last`, alike but for the number in their texts.
std::vector<LdfEntry> numbered_entries(unsigned first, unsigned last);

// Damage. Each returns a changed copy.
std::string truncated(std::string_view bytes, std::size_t length);
std::string flipped_bit(std::string_view bytes, std::size_t position, unsigned bit);
std::string flipped_byte(std::string_view bytes, std::size_t position);
std::string with_int4(std::string_view bytes, std::size_t position, unsigned value);
/// Two runs of the same length, not overlapping, exchanged.
std::string swapped(std::string_view bytes, std::size_t first, std::size_t second, std::size_t length);
/// A run written once more directly behind itself.
std::string repeated(std::string_view bytes, std::size_t position, std::size_t length);

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_LDF_FILE_H
