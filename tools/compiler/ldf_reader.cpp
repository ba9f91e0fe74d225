#include "tools/compiler/ldf_reader.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "tools/compiler/ldf_format.h"

namespace qzlog_compiler {
namespace {

/// Reads at a position and stops at the first thing that is not there.
class LdfCursor {
 public:
  explicit LdfCursor(std::string_view bytes) : bytes_(bytes) {}

  bool failed() const { return damage_.has_value(); }
  std::optional<LdfDamage> damage() const { return damage_; }
  std::size_t offset() const { return offset_; }
  void seek(std::size_t offset) { offset_ = offset; }

  void fail(std::size_t offset, std::string reason) {
    if (!damage_) damage_ = LdfDamage{offset, std::move(reason)};
  }

  std::string_view take(std::size_t size, const char* what) {
    if (failed()) return {};
    if (offset_ > bytes_.size() || size > bytes_.size() - offset_) {
      fail(offset_, std::string("the file ends within ") + what);
      return {};
    }
    offset_ += size;
    return bytes_.substr(offset_ - size, size);
  }

  std::uint32_t take_int4(const char* what) {
    std::uint32_t value = 0;
    for (const char byte : take(4, what)) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
  }

  std::string take_string(const char* what) {
    const std::uint32_t size = take_int4(what);
    const std::string_view stored = take(size, what);
    return std::string(stored.substr(0, stored.find('\0')));
  }

  AttributeDefinition take_attribute(const char* what) {
    AttributeDefinition attribute;
    attribute.name = take_string(what);
    attribute.type = static_cast<qz_AttributeType>(take_int4(what) & 0xFFU);  // readers keep a code's low 8 bits
    attribute.redirect = take_string(what);
    return attribute;
  }

 private:
  std::string_view bytes_;
  std::size_t offset_ = 0;
  std::optional<LdfDamage> damage_;
};

struct LdfHeader {
  std::uint32_t global_count = 0;
  std::uint32_t global_offset = 0;
  std::uint32_t entry_count = 0;
  std::uint32_t entry_map_offset = 0;
};

class LdfParser {
 public:
  explicit LdfParser(std::string_view bytes) : bytes_(bytes), cursor_(bytes) {}

  LdfFile parse() {
    const LdfHeader header = take_header();
    take_globals(header);
    for (const auto& [id, offset] : take_entry_map(header)) take_entry(id, offset);
    return {std::move(model_), cursor_.damage()};
  }

 private:
  std::uint32_t header_int4(std::size_t offset) {
    cursor_.seek(offset);
    return cursor_.take_int4("the header");
  }

  LdfHeader take_header() {
    if (header_int4(0) != ldf::kMagic) cursor_.fail(0, "the file does not begin with \".LDF\"");
    cursor_.seek(0);
    cursor_.take(ldf::kHeaderSize, "the header");
    cursor_.seek(ldf::kVersionTagOffset);
    const std::string_view tag = cursor_.take(ldf::kVersionTagSize, "the header");
    model_.version = tag.substr(0, tag.find('\0'));
    return {header_int4(ldf::kGlobalCountOffset), header_int4(ldf::kGlobalOffsetOffset),
            header_int4(ldf::kEntryCountOffset), header_int4(ldf::kEntryMapOffsetOffset)};
  }

  void take_globals(const LdfHeader& header) {
    cursor_.seek(header.global_offset);
    for (std::uint32_t i = 0; i < header.global_count && !cursor_.failed(); ++i) {
      AttributeDefinition global = cursor_.take_attribute("the global attributes");
      if (!cursor_.failed()) model_.globals.push_back(std::move(global));
    }
  }

  std::vector<std::pair<std::uint32_t, std::uint32_t>> take_entry_map(const LdfHeader& header) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    std::unordered_map<std::uint32_t, std::size_t> places;
    cursor_.seek(header.entry_map_offset);
    for (std::uint32_t i = 0; i < header.entry_count && !cursor_.failed(); ++i) {
      const std::uint32_t id = cursor_.take_int4("the entry map");
      const std::uint32_t offset = cursor_.take_int4("the entry map");
      if (cursor_.failed()) break;
      const auto [place, added] = places.try_emplace(id, pairs.size());
      if (added) {
        pairs.emplace_back(id, offset);
      } else {
        pairs[place->second].second = offset;
      }
    }
    return pairs;
  }

  void take_entry(std::uint32_t id, std::uint32_t offset) {
    if (cursor_.failed()) return;
    cursor_.seek(offset);
    EntryDefinition entry = take_entry_info();
    if (!cursor_.failed() && entry.id != id)
      cursor_.fail(offset, "the record of entry " + std::to_string(id) + " has another ID");
    take_attributes(entry);
    take_selector_messages(entry);
    if (cursor_.failed()) return;
    record_bytes_ += cursor_.offset() - offset;
    if (record_bytes_ > bytes_.size()) {
      cursor_.fail(offset, "entry records overlap");
      return;
    }
    model_.entries.push_back(std::move(entry));
  }

  EntryDefinition take_entry_info() {
    EntryDefinition entry;
    entry.id = cursor_.take_int4("an entry record");
    entry.word = cursor_.take_int4("an entry record");
    entry.mask = cursor_.take_int4("an entry record");
    entry.message_id = cursor_.take_string("an entry record");
    entry.message = take_message();
    entry.selector.attribute = cursor_.take_string("an entry record");
    return entry;
  }

  void take_attributes(EntryDefinition& entry) {
    const std::uint32_t count = cursor_.take_int4("an attribute count");
    for (std::uint32_t i = 0; i < count && !cursor_.failed(); ++i) {
      entry.attributes.push_back(cursor_.take_attribute("an attribute"));
    }
  }

  void take_selector_messages(EntryDefinition& entry) {
    const std::uint32_t count = cursor_.take_int4("a selector message count");
    for (std::uint32_t i = 0; i < count && !cursor_.failed(); ++i) {
      SelectorMessage message;
      message.index = cursor_.take_int4("a selector message");
      message.value = cursor_.take_int4("a selector message");
      message.id = cursor_.take_string("a selector message");
      message.message = take_message();
      entry.selector.messages.push_back(std::move(message));
    }
  }

  MessageText take_message() {
    MessageText message;
    message.stored = cursor_.take_string("a message text");
    message.written = message.stored;
    message.raw = true;
    return message;
  }

  std::string_view bytes_;
  LdfCursor cursor_;
  DefinitionModel model_;
  std::size_t record_bytes_ = 0;
};

}  // namespace

bool looks_like_ldf(std::string_view bytes) { return bytes.starts_with(".LDF"); }

LdfFile read_ldf(std::string_view bytes) { return LdfParser(bytes).parse(); }

}  // namespace qzlog_compiler
