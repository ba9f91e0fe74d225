#ifndef QZLOG_MESSAGE_RESOURCE_DATA_H
#define QZLOG_MESSAGE_RESOURCE_DATA_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qzlog {

/// A value in a bundle: its type in the upper 4 bits, in the others where it stands, or the value itself.
using Resource = std::uint32_t;

enum class ResourceType : unsigned char {
  kString = 0,
  kBinary = 1,
  kTable = 2,
  kAlias = 3,
  kTable32 = 4,
  kTable16 = 5,
  kString16 = 6,
  kInteger = 7,
  kArray = 8,
  kArray16 = 9,
  kIntegers = 14,
};

constexpr unsigned kResourceTypeShift = 28;
constexpr std::uint32_t kResourceOffsetMask = (1U << kResourceTypeShift) - 1;

constexpr ResourceType type_of(Resource resource) { return static_cast<ResourceType>(resource >> kResourceTypeShift); }
constexpr std::uint32_t offset_of(Resource resource) { return resource & kResourceOffsetMask; }
bool is_table(Resource resource);
bool is_array(Resource resource);
bool is_string(Resource resource);

/// Where the parts of a bundle begin and end, counted from its first word (the root resource) on.
struct ResourceLayout {
  std::size_t keys_begin = 0;   // bytes
  std::size_t keys_end = 0;     // behind the last key that has an end
  std::size_t units_begin = 0;  // 16-bit units
  std::size_t units_end = 0;
  std::size_t texts_end = 0;        // behind the last text among the units that has an end, from their beginning on
  std::size_t resources_begin = 0;  // words
  std::size_t resources_end = 0;
  std::size_t bundle_end = 0;
  std::uint32_t local_key_limit = 0;      // 16-bit key offsets from here on stand for keys of the pool
  std::uint32_t pool_string_limit = 0;    // string offsets below stand for strings of the pool
  std::uint32_t pool_string16_limit = 0;  // the same in tables and arrays of 16-bit items
  std::uint32_t pool_checksum = 0;
  bool has_no_fallback = false;
  bool is_pool = false;
  bool uses_pool = false;
};

class ResourceData;

/// What a file's bytes are.
struct ReadResource {
  /// A foreign file is none that this machine could have as a bundle: something else, another byte order, a later
  /// version of the format.
  enum class State : unsigned char { kGood, kForeign, kDamaged };
  State state = State::kDamaged;
  std::string problem;                 ///< in words, when it is not good
  std::shared_ptr<ResourceData> data;  ///< when it is good; not yet checked
};

/// A compiled resource bundle (.res) in memory, format versions 1 to 3, in the byte order of this machine.
///
/// Its structure is checked once, as a whole; from then on nothing that is looked up can fail or lead outside the
/// memory. Never changes after that; any thread.
class ResourceData {
 public:
  /// The items of a table, ordered by their keys, or of an array.
  struct Items {
    std::size_t count = 0;
    std::size_t keys = 0;    // byte offset, 0 without keys
    std::size_t values = 0;  // byte offset
    std::size_t key_size = 0;
    std::size_t value_size = 0;
    std::size_t end() const { return values + count * value_size; }
  };

  /// Reads the header of a bundle and what it says about the layout. Throws std::bad_alloc.
  static ReadResource read(std::string bytes);
  /// Whether the beginning says that this is no bundle of this machine, however the bytes go on.
  static bool is_foreign(std::string_view bytes);
  /// Whether the bytes begin as those of a file of ICU's that has `format` as its format, for this machine.
  static bool has_header(std::string_view bytes, std::string_view format);
  static std::size_t header_size(std::string_view bytes);
  /// Of the format.
  static constexpr unsigned char kLastVersion = 3;
  /// The shortest header.
  static constexpr std::size_t kSmallestHeader = 24;

  /// The bundle whose keys and strings this one uses; false when it is another one than this was made with. Before
  /// check(), for a bundle that uses one.
  bool set_pool(std::shared_ptr<const ResourceData> pool);
  /// What is wrong with the structure, in words, or null. Before anything is looked up. Throws std::bad_alloc.
  const char* check() const;

  const ResourceLayout& layout() const { return layout_; }
  Resource root() const { return word(0); }
  /// How much of the file stands behind the bundle: nothing looks at it.
  std::size_t bytes_behind() const;

  /// False when a table does not have the key or `table` is none.
  bool find(Resource table, std::string_view key, Resource& found) const;
  /// Of a table or an array; empty for everything else.
  Items items_of(Resource container) const;
  std::string_view key(const Items& items, std::size_t index) const;
  Resource value(const Items& items, std::size_t index) const;
  /// The text of a string or of an alias.
  std::u16string text_of(Resource resource) const;

 private:
  friend class ResourceCheck;
  ResourceData(std::string bytes, std::size_t begin) : bytes_(std::move(bytes)), begin_(begin) {}

  const char* read_layout(unsigned char major, unsigned char minor);
  const char* read_index();
  std::size_t size() const { return bytes_.size() - begin_; }
  template <typename Number>
  Number number(std::size_t offset) const;
  std::uint32_t word(std::size_t index) const;
  std::uint16_t unit(std::size_t index) const;
  std::u16string units(std::size_t byte_offset, std::size_t count) const;
  void find_last_ends();
  /// A bundle without 16-bit units has one, the zero that stands for everything empty.
  std::size_t unit_count() const;
  /// A text among the units: where it begins, and how long it is.
  struct Text {
    std::size_t begin = 0;
    std::size_t length = 0;
  };
  Text text_at(std::size_t index) const;
  /// Where a key stands: in this bundle from its first byte on, or in the pool from the pool's first key on.
  struct KeyPlace {
    bool is_of_pool = false;
    std::size_t offset = 0;
  };
  KeyPlace key_place(const Items& items, std::size_t index) const;

  std::string bytes_;  // the whole file
  std::size_t begin_;  // of the bundle in it
  ResourceLayout layout_;
  std::shared_ptr<const ResourceData> pool_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_DATA_H
