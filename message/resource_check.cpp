#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "message/resource_data.h"

namespace qzlog {

namespace {

constexpr std::size_t kWord = sizeof(std::uint32_t);
constexpr std::size_t kUnit = sizeof(std::uint16_t);
constexpr unsigned kDeepest = 64;  // nested tables and arrays; bundles of messages have two levels
/// Comparing keys may cost this much per byte of the bundle: far above what a real one needs, far below what keys can
/// cost that share their bytes.
constexpr std::size_t kComparedPerByte = 256;

constexpr const char* kMisplaced = "a part of the bundle stands outside of it";
constexpr const char* kUnended = "a text of the bundle has no end";

}  // namespace

/// Follows every resource from the root. Each is looked at once; what overlaps without being the same costs more than
/// an honest bundle of that size has, and is refused for it.
class ResourceCheck {
 public:
  explicit ResourceCheck(const ResourceData& data)
      : data_(data),
        layout_(data.layout_),
        items_left_(data.size() / kUnit),
        comparisons_left_(data.size() * kComparedPerByte) {}

  const char* run() {
    if (layout_.uses_pool && data_.pool_ == nullptr) return "the bundle's pool is not there";
    if (layout_.pool_string16_limit > layout_.pool_string_limit) return kMisplaced;
    return check_container(data_.root(), 0);
  }

 private:
  enum class Progress : unsigned char { kOpen, kDone };

  const char* check(Resource resource, unsigned depth) {
    switch (type_of(resource)) {
      case ResourceType::kString:
      case ResourceType::kAlias:
        return check_counted(resource, kUnit);
      case ResourceType::kBinary:
        return check_counted(resource, 1);
      case ResourceType::kIntegers:
        return check_counted(resource, kWord);
      case ResourceType::kString16:
        return check_units(offset_of(resource));
      case ResourceType::kInteger:
        return nullptr;
      case ResourceType::kTable:
      case ResourceType::kTable16:
      case ResourceType::kTable32:
      case ResourceType::kArray:
      case ResourceType::kArray16:
        return check_container(resource, depth);
    }
    return "the bundle has a value of an unknown type";
  }

  /// Whether this many bytes from a word on belong to the resources.
  bool has_bytes(std::size_t offset, std::size_t count) const {
    return offset >= layout_.resources_begin && offset < layout_.resources_end &&
           count <= (layout_.resources_end - offset) * kWord;
  }

  /// A word with the number of elements, and the elements. Nothing at all stands at offset 0.
  const char* check_counted(Resource resource, std::size_t element_size) const {
    const std::size_t offset = offset_of(resource);
    if (offset == 0) return nullptr;
    if (!has_bytes(offset, kWord)) return kMisplaced;
    const std::size_t count = data_.word(offset);
    return count <= data_.size() && has_bytes(offset, kWord + count * element_size) ? nullptr : kMisplaced;
  }

  const char* check_units(std::size_t offset) const {
    const bool is_of_pool = offset < layout_.pool_string_limit;
    if (is_of_pool && data_.pool_ == nullptr) return kMisplaced;
    return is_of_pool ? check_text(*data_.pool_, offset) : check_text(data_, offset - layout_.pool_string_limit);
  }

  static const char* check_text(const ResourceData& owner, std::size_t index) {
    constexpr std::size_t kLongestCount = 3;  // units
    const std::size_t count = owner.unit_count();
    if (index >= count) return kMisplaced;
    if ((owner.unit(index) & 0xFC00U) != 0xDC00U) return index < owner.layout_.texts_end ? nullptr : kUnended;
    if (count - index < kLongestCount) return kMisplaced;  // a zero follows every text
    const ResourceData::Text text = owner.text_at(index);
    return text.begin <= count && text.length <= count - text.begin ? nullptr : kMisplaced;
  }

  /// Its place, and that of its keys; null when they are within the bundle.
  const char* check_place(Resource container) const {
    const std::size_t offset = offset_of(container);
    const ResourceType type = type_of(container);
    if (type == ResourceType::kTable16 || type == ResourceType::kArray16) {
      if (offset >= data_.unit_count()) return kMisplaced;
      const bool is_empty = data_.unit(offset) == 0;
      return is_empty || data_.items_of(container).end() <= layout_.units_end * kUnit ? nullptr : kMisplaced;
    }
    if (offset == 0) return nullptr;
    if (!has_bytes(offset, kWord)) return kMisplaced;
    const ResourceData::Items items = data_.items_of(container);
    return items.count <= data_.size() / kWord && items.end() <= layout_.resources_end * kWord ? nullptr : kMisplaced;
  }

  const char* check_container(Resource container, unsigned depth) {
    if (depth >= kDeepest) return "the bundle's tables are nested too deeply";
    const auto [known, is_new] = seen_.try_emplace(container, Progress::kOpen);
    if (!is_new) return known->second == Progress::kDone ? nullptr : "a table of the bundle is within itself";
    const char* problem = check_place(container);
    if (problem == nullptr) problem = check_items(container, depth);
    seen_[container] = Progress::kDone;
    return problem;
  }

  const char* check_items(Resource container, unsigned depth) {
    const ResourceData::Items items = data_.items_of(container);
    if (items.count > items_left_) return "parts of the bundle overlap";
    items_left_ -= items.count;
    if (items.keys != 0) {
      const char* const problem = check_keys(items);
      if (problem != nullptr) return problem;
    }
    for (std::size_t i = 0; i < items.count; ++i) {
      const char* const problem = check(data_.value(items, i), depth + 1);
      if (problem != nullptr) return problem;
    }
    return nullptr;
  }

  const char* check_keys(const ResourceData::Items& items) {
    std::string_view previous;
    for (std::size_t i = 0; i < items.count; ++i) {
      const char* const problem = check_key_place(items, i);
      if (problem != nullptr) return problem;
      const std::string_view key = data_.key(items, i);
      if (key.size() >= comparisons_left_) return "parts of the bundle overlap";
      comparisons_left_ -= key.size() + 1;
      if (i > 0 && previous >= key) return "the keys of a table are not in order";
      previous = key;
    }
    return nullptr;
  }

  const char* check_key_place(const ResourceData::Items& items, std::size_t index) const {
    const ResourceData::KeyPlace place = data_.key_place(items, index);
    if (place.is_of_pool && data_.pool_ == nullptr) return kMisplaced;
    const ResourceLayout& owner = place.is_of_pool ? data_.pool_->layout_ : layout_;
    const std::size_t offset = place.is_of_pool ? owner.keys_begin + place.offset : place.offset;
    return offset >= owner.keys_begin && offset < owner.keys_end ? nullptr : kMisplaced;
  }

  const ResourceData& data_;
  const ResourceLayout& layout_;
  std::size_t items_left_;
  std::size_t comparisons_left_;
  std::unordered_map<Resource, Progress> seen_;
};

const char* ResourceData::check() const { return ResourceCheck(*this).run(); }

}  // namespace qzlog
