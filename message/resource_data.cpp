#include "message/resource_data.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qzlog {

namespace {

constexpr std::size_t kWord = sizeof(std::uint32_t);
constexpr std::size_t kUnit = sizeof(std::uint16_t);

// A header: its size, two magic bytes, and from kInfoOffset on the size of what describes the data, a reserved word,
// byte order, character set, size of a code unit, reserved byte, format, the format's version.
constexpr std::size_t kMagicOffset = 2;
constexpr std::size_t kInfoOffset = 4;
constexpr std::size_t kByteOrderOffset = 8;
constexpr std::size_t kCharsetOffset = 9;
constexpr std::size_t kUnitSizeOffset = 10;
constexpr std::size_t kFormatOffset = 12;
constexpr std::size_t kVersionOffset = 16;
constexpr std::size_t kSmallestInfo = 20;
constexpr std::string_view kMagic = "\xDA\x27";
constexpr std::string_view kBundleFormat = "ResB";
constexpr const char* kShort = "the file is shorter than the bundle in it";
constexpr char kBigEndianHere = static_cast<char>(__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__);

// The index behind the root resource: words, by position.
constexpr std::size_t kIndex = 1;
enum IndexField : unsigned char {
  kIndexLength,  // in its lower byte
  kKeysEnd,
  kResourcesEnd,
  kBundleEnd,
  kLongestTable,
  kAttributes,
  kUnitsEnd,
  kPoolChecksum,
};
constexpr std::uint32_t kNoFallback = 1;
constexpr std::uint32_t kIsPool = 2;
constexpr std::uint32_t kUsesPool = 4;
constexpr std::uint32_t kAnyKeyOffset = 0x10000;  // above every 16-bit one

template <typename Number>
Number number_at(std::string_view bytes, std::size_t offset) {
  Number number = 0;
  std::memcpy(&number, bytes.data() + offset, sizeof(number));
  return number;
}

bool has_magic(std::string_view bytes) {
  return bytes.size() >= kMagicOffset + kMagic.size() && bytes.substr(kMagicOffset, kMagic.size()) == kMagic;
}

ReadResource refused(ReadResource::State state, const char* problem) { return {state, problem, nullptr}; }

}  // namespace

bool is_table(Resource resource) {
  const ResourceType type = type_of(resource);
  return type == ResourceType::kTable || type == ResourceType::kTable16 || type == ResourceType::kTable32;
}

bool is_array(Resource resource) {
  return type_of(resource) == ResourceType::kArray || type_of(resource) == ResourceType::kArray16;
}

bool is_string(Resource resource) {
  return type_of(resource) == ResourceType::kString || type_of(resource) == ResourceType::kString16;
}

std::size_t ResourceData::header_size(std::string_view bytes) { return number_at<std::uint16_t>(bytes, 0); }

bool ResourceData::has_header(std::string_view bytes, std::string_view format) {
  return bytes.size() >= kSmallestHeader && has_magic(bytes) &&
         number_at<std::uint16_t>(bytes, kInfoOffset) >= kSmallestInfo && bytes[kByteOrderOffset] == kBigEndianHere &&
         bytes[kCharsetOffset] == 0 && bytes[kUnitSizeOffset] == kUnit &&
         bytes.substr(kFormatOffset, format.size()) == format;
}

bool ResourceData::is_foreign(std::string_view bytes) {
  if (bytes.size() >= kMagicOffset + kMagic.size() && !has_magic(bytes)) return true;
  if (bytes.size() < kSmallestHeader) return false;
  const auto version = static_cast<unsigned char>(bytes[kVersionOffset]);
  return !has_header(bytes, kBundleFormat) || version == 0 || version > kLastVersion;
}

ReadResource ResourceData::read(std::string bytes) {
  using State = ReadResource::State;
  if (is_foreign(bytes)) {
    const bool is_of_other_order = has_magic(bytes) && bytes[kByteOrderOffset] != kBigEndianHere;
    return refused(State::kForeign, is_of_other_order ? "the bundle was made for machines of another byte order"
                                                      : "the file is no resource bundle");
  }
  if (bytes.size() < kSmallestHeader) return refused(State::kDamaged, kShort);
  const std::size_t begin = header_size(bytes);
  if (begin < kSmallestHeader || begin + kWord > bytes.size()) return refused(State::kDamaged, kShort);
  const auto major = static_cast<unsigned char>(bytes[kVersionOffset]);
  const auto minor = static_cast<unsigned char>(bytes[kVersionOffset + 1]);
  std::shared_ptr<ResourceData> data(new ResourceData(std::move(bytes), begin));
  const char* const problem = data->read_layout(major, minor);
  if (problem != nullptr) return refused(State::kDamaged, problem);
  return {State::kGood, "", std::move(data)};
}

const char* ResourceData::read_layout(unsigned char major, unsigned char minor) {
  if (!is_table(root())) return "the bundle's root is no table";
  if (major == 1 && minor == 0) {
    // Without an index: only the file's end bounds anything.
    layout_.keys_begin = kWord;
    layout_.keys_end = size();
    layout_.resources_begin = 1;
    layout_.resources_end = layout_.bundle_end = size() / kWord;
    layout_.local_key_limit = kAnyKeyOffset;
    find_last_ends();
    return nullptr;
  }
  const char* const problem = read_index();
  if (problem != nullptr) return problem;
  constexpr unsigned char kWithPoolStrings = 3;
  if (major < kWithPoolStrings) layout_.pool_string_limit = layout_.pool_string16_limit = 0;
  find_last_ends();
  return nullptr;
}

void ResourceData::find_last_ends() {
  while (layout_.keys_end > layout_.keys_begin && number<char>(layout_.keys_end - 1) != '\0') --layout_.keys_end;
  layout_.texts_end = unit_count();
  while (layout_.texts_end > 0 && unit(layout_.texts_end - 1) != 0) --layout_.texts_end;
}

const char* ResourceData::read_index() {
  if (size() < (kIndex + 1) * kWord) return kShort;
  const auto field = [&](IndexField index) { return word(kIndex + index); };
  const std::size_t length = field(kIndexLength) & 0xFFU;
  if (length <= kLongestTable) return "the bundle's index is too short";
  const std::size_t index_end = kIndex + length;
  if (size() / kWord < index_end || size() / kWord < field(kBundleEnd)) return kShort;
  const std::size_t keys_end = std::max<std::size_t>(field(kKeysEnd), index_end);
  const std::size_t units_end = length > kUnitsEnd ? std::max<std::size_t>(field(kUnitsEnd), keys_end) : keys_end;
  if (units_end > field(kResourcesEnd) || field(kResourcesEnd) > field(kBundleEnd)) {
    return "the parts of the bundle are not in order";
  }
  const std::uint32_t attributes = length > kAttributes ? field(kAttributes) : 0;
  layout_.keys_begin = index_end * kWord;
  layout_.keys_end = keys_end * kWord;
  layout_.units_begin = keys_end * 2;
  layout_.units_end = units_end * 2;
  layout_.resources_begin = units_end;
  layout_.resources_end = field(kResourcesEnd);
  layout_.bundle_end = field(kBundleEnd);
  layout_.local_key_limit = keys_end > index_end ? static_cast<std::uint32_t>(keys_end * kWord) : 0;
  layout_.pool_string_limit = field(kIndexLength) >> 8U | (attributes & 0xF000U) << 12U;
  layout_.pool_string16_limit = attributes >> 16U;
  layout_.has_no_fallback = (attributes & kNoFallback) != 0;
  layout_.is_pool = (attributes & kIsPool) != 0;
  layout_.uses_pool = (attributes & kUsesPool) != 0;
  if ((layout_.is_pool || layout_.uses_pool) && length <= kPoolChecksum) return "the bundle's index is too short";
  if (length > kPoolChecksum) layout_.pool_checksum = field(kPoolChecksum);
  return nullptr;
}

bool ResourceData::set_pool(std::shared_ptr<const ResourceData> pool) {
  if (!pool->layout_.is_pool || pool->layout_.pool_checksum != layout_.pool_checksum) return false;
  pool_ = std::move(pool);
  return true;
}

std::size_t ResourceData::bytes_behind() const { return size() - layout_.bundle_end * kWord; }

template <typename Number>
Number ResourceData::number(std::size_t offset) const {
  return number_at<Number>(bytes_, begin_ + offset);
}

std::uint32_t ResourceData::word(std::size_t index) const { return number<std::uint32_t>(index * kWord); }

std::size_t ResourceData::unit_count() const {
  return std::max<std::size_t>(layout_.units_end - layout_.units_begin, 1);
}

std::uint16_t ResourceData::unit(std::size_t index) const {
  return layout_.units_begin == layout_.units_end ? 0 : number<std::uint16_t>((layout_.units_begin + index) * kUnit);
}

ResourceData::Items ResourceData::items_of(Resource container) const {
  const std::size_t offset = offset_of(container);
  const std::size_t at = offset * kWord;
  switch (type_of(container)) {
    case ResourceType::kTable: {
      if (offset == 0) return {};
      const std::size_t count = number<std::uint16_t>(at);
      const std::size_t keys = at + kUnit;
      return {count, keys, keys + (count + (~count & 1U)) * kUnit, kUnit, kWord};
    }
    case ResourceType::kTable32: {
      if (offset == 0) return {};
      const std::size_t count = number<std::uint32_t>(at);
      return {count, at + kWord, at + kWord + count * kWord, kWord, kWord};
    }
    case ResourceType::kArray:
      return offset == 0 ? Items{} : Items{number<std::uint32_t>(at), 0, at + kWord, 0, kWord};
    case ResourceType::kTable16: {
      const std::size_t count = unit(offset);
      const std::size_t keys = (layout_.units_begin + offset + 1) * kUnit;
      return {count, keys, keys + count * kUnit, kUnit, kUnit};
    }
    case ResourceType::kArray16:
      return {unit(offset), 0, (layout_.units_begin + offset + 1) * kUnit, 0, kUnit};
    default:
      return {};
  }
}

ResourceData::KeyPlace ResourceData::key_place(const Items& items, std::size_t index) const {
  constexpr std::uint32_t kOfPool = 1U << 31U;
  const std::size_t at = items.keys + index * items.key_size;
  if (items.key_size == kWord) {
    const auto offset = number<std::uint32_t>(at);
    return {(offset & kOfPool) != 0, offset & ~kOfPool};
  }
  const std::uint32_t offset = number<std::uint16_t>(at);
  const bool is_of_pool = offset >= layout_.local_key_limit;
  return {is_of_pool, is_of_pool ? offset - layout_.local_key_limit : offset};
}

std::string_view ResourceData::key(const Items& items, std::size_t index) const {
  const KeyPlace place = key_place(items, index);
  const ResourceData& owner = place.is_of_pool ? *pool_ : *this;
  const std::size_t first = place.is_of_pool ? owner.layout_.keys_begin : 0;
  return owner.bytes_.c_str() + owner.begin_ + first + place.offset;
}

Resource ResourceData::value(const Items& items, std::size_t index) const {
  const std::size_t at = items.values + index * items.value_size;
  if (items.value_size == kWord) return number<std::uint32_t>(at);
  std::uint32_t offset = number<std::uint16_t>(at);
  if (offset >= layout_.pool_string16_limit) offset += layout_.pool_string_limit - layout_.pool_string16_limit;
  return static_cast<Resource>(ResourceType::kString16) << kResourceTypeShift | (offset & kResourceOffsetMask);
}

bool ResourceData::find(Resource table, std::string_view key, Resource& found) const {
  if (!is_table(table)) return false;
  const Items items = items_of(table);
  std::size_t begin = 0;
  std::size_t end = items.count;
  while (begin < end) {
    const std::size_t middle = begin + (end - begin) / 2;
    const int order = key.compare(this->key(items, middle));
    if (order == 0) {
      found = value(items, middle);
      return true;
    }
    (order < 0 ? end : begin) = order < 0 ? middle : middle + 1;
  }
  return false;
}

std::u16string ResourceData::units(std::size_t byte_offset, std::size_t count) const {
  std::u16string text(count, u'\0');
  std::memcpy(text.data(), bytes_.data() + begin_ + byte_offset, count * kUnit);
  return text;
}

/// A text that does not end with a zero has its length in one to three units before it: those begin as no text can,
/// with the second half of a pair.
ResourceData::Text ResourceData::text_at(std::size_t index) const {
  const std::size_t first = unit(index);
  if ((first & 0xFC00U) != 0xDC00U) {
    std::size_t end = index;
    while (unit(end) != 0) ++end;
    return {index, end - index};
  }
  if (first < 0xDFEFU) return {index + 1, first & 0x3FFU};
  if (first < 0xDFFFU) return {index + 2, (first - 0xDFEFU) << 16U | unit(index + 1)};
  return {index + 3, std::size_t{unit(index + 1)} << 16U | unit(index + 2)};
}

std::u16string ResourceData::text_of(Resource resource) const {
  const std::size_t offset = offset_of(resource);
  if (type_of(resource) == ResourceType::kString16) {
    const bool is_of_pool = offset < layout_.pool_string_limit;
    const ResourceData& owner = is_of_pool ? *pool_ : *this;
    const Text text = owner.text_at(is_of_pool ? offset : offset - layout_.pool_string_limit);
    return owner.units((owner.layout_.units_begin + text.begin) * kUnit, text.length);
  }
  return offset == 0 ? std::u16string() : units((offset + 1) * kWord, word(offset));
}

}  // namespace qzlog
