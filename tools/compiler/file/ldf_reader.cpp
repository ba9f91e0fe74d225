#include "tools/compiler/file/ldf_reader.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "definitions/definition_format.h"
#include "tools/compiler/file/ldf_names.h"

namespace qzlog_compiler {
namespace {

MessageText to_message(const LdfText& stored) {
  MessageText message;
  message.stored = stored.text();
  message.written = message.stored;
  message.raw = true;
  return message;
}

SelectorMessage to_selector_message(const LdfSelectorRecord& record) {
  SelectorMessage message;
  message.index = record.index;
  message.value = record.value;
  message.id = record.id.text();
  message.message = to_message(record.text);
  return message;
}

/// Reads region after region and stops at the first damage.
class LdfParser {
 public:
  explicit LdfParser(std::string_view bytes) : bytes_(bytes) {}

  LdfFile parse() {
    const LdfHeader header = take_header();
    take_globals(header);
    for (const LdfPair& pair : take_entry_map(header)) take_entry(pair);
    std::optional<LdfDamage> names_damage = take_names();
    return {std::move(model_), std::move(damage_), std::move(names_damage)};
  }

 private:
  LdfHeader take_header() {
    LdfCursor cursor(bytes_, 0);
    const LdfHeader header = read_ldf_header(cursor);
    if (bytes_.size() >= 4 && !looks_like_ldf(bytes_)) {
      damage_ = {0, kWrongMagic};
    } else if (cursor.failed()) {
      damage_ = {0, cursor.damage()->reason};
    }
    model_.version = header.version();
    return header;
  }

  void take_globals(const LdfHeader& header) {
    if (damage_) return;
    LdfCursor cursor(bytes_, header.global_offset);
    read_ldf_globals(cursor, header.global_count,
                     [this](const LdfAttributeRecord& global) { model_.globals.push_back(to_definition(global)); });
    damage_ = cursor.damage();
    note_end(cursor);
  }

  std::vector<LdfPair> take_entry_map(const LdfHeader& header) {
    std::vector<LdfPair> pairs;
    std::unordered_map<std::uint32_t, std::size_t> places;
    LdfCursor cursor(bytes_, header.entry_map_offset);
    for (std::uint32_t i = 0; i < header.entry_count && !damage_; ++i) {
      const LdfPair pair = read_ldf_pair(cursor);
      damage_ = cursor.damage();
      if (damage_) break;
      const auto [place, added] = places.try_emplace(pair.id, pairs.size());
      if (added) {
        pairs.push_back(pair);
      } else {
        pairs[place->second].record_offset = pair.record_offset;
      }
    }
    note_end(cursor);
    return pairs;
  }

  void take_entry(const LdfPair& pair) {
    if (damage_) return;
    LdfCursor cursor(bytes_, pair.record_offset);
    const LdfEntryRecord record = read_ldf_entry(cursor);
    record_bytes_ += record.size;
    damage_ = cursor.damage();
    if (record.id != pair.id && record.size >= 4) {
      damage_ = {record.offset, "the record of entry " + std::to_string(pair.id) + " has another ID"};
    } else if (!damage_ && record_bytes_ > bytes_.size()) {
      damage_ = {record.offset, "entry records overlap"};
    }
    if (!damage_) model_.entries.push_back(to_definition(record));
    note_end(cursor);
  }

  void note_end(const LdfCursor& cursor) { records_end_ = std::max(records_end_, cursor.offset()); }

  /// Where a damage ends the records, nobody knows what the bytes behind it are.
  std::optional<LdfDamage> take_names() {
    const std::optional<LdfNames> names = read_ldf_names(bytes_, damage_ ? bytes_.size() : records_end_);
    if (!names) return std::nullopt;
    apply_names(*names, model_);
    return names->damage;
  }

  std::string_view bytes_;
  DefinitionModel model_;
  std::optional<LdfDamage> damage_;
  std::size_t record_bytes_ = 0;
  std::size_t records_end_ = qzlog::ldf::kHeaderSize;
};

}  // namespace

AttributeDefinition to_definition(const LdfAttributeRecord& record) {
  AttributeDefinition attribute;
  attribute.name = record.name.text();
  attribute.type = static_cast<qz_AttributeType>(record.type_code & qzlog::ldf::kTypeCodeMask);
  attribute.redirect = record.redirect.text();
  return attribute;
}

EntryDefinition to_definition(const LdfEntryRecord& record) {
  EntryDefinition entry;
  entry.id = record.id;
  entry.word = record.word;
  entry.mask = record.mask;
  entry.message_id = record.message_id.text();
  entry.message = to_message(record.message);
  entry.selector.attribute = record.selector.text();
  for (const LdfAttributeRecord& attribute : record.attributes) entry.attributes.push_back(to_definition(attribute));
  for (const LdfSelectorRecord& message : record.selector_messages) {
    entry.selector.messages.push_back(to_selector_message(message));
  }
  return entry;
}

bool looks_like_ldf(std::string_view bytes) { return bytes.starts_with(".LDF"); }

LdfFile read_ldf(std::string_view bytes) { return LdfParser(bytes).parse(); }

}  // namespace qzlog_compiler
