#include "tools/compiler/file/ldf_records.h"

#include <utility>

#include "definitions/definition_format.h"

namespace qzlog_compiler {
namespace {

constexpr std::string_view kReserved = "reserved";

void skip_reserved(LdfCursor& cursor, std::size_t end) {
  if (cursor.offset() < end) cursor.take_bytes(kReserved, LdfFieldKind::kBytes, end - cursor.offset());
}

void read_attributes(LdfCursor& cursor, const LdfItemSinks& sinks, LdfEntryRecord& entry) {
  cursor.set_region("an attribute count");
  const std::uint32_t count = cursor.take_int4("attribute count");
  if (cursor.failed()) return;
  entry.attribute_count = count;
  cursor.set_region("an attribute");
  for (std::uint32_t i = 0; i < count && !cursor.failed(); ++i) {
    cursor.set_item("attributes", i);
    const LdfAttributeRecord attribute = read_ldf_attribute(cursor);
    if (!cursor.failed() && sinks.attribute) sinks.attribute(attribute);
  }
  cursor.leave_list();
}

LdfSelectorRecord read_selector_message(LdfCursor& cursor) {
  LdfSelectorRecord message;
  message.offset = cursor.offset();
  cursor.set_region("a selector message");
  message.index = cursor.take_int4("index");
  message.value = cursor.take_int4("value");
  message.id = cursor.take_text("id");
  cursor.set_region("a message text");
  message.text = cursor.take_text("text");
  return message;
}

void read_selector_messages(LdfCursor& cursor, const LdfItemSinks& sinks, LdfEntryRecord& entry) {
  cursor.set_region("a selector message count");
  const std::uint32_t count = cursor.take_int4("selector message count");
  if (cursor.failed()) return;
  entry.selector_message_count = count;
  for (std::uint32_t i = 0; i < count && !cursor.failed(); ++i) {
    cursor.set_item("selector messages", i);
    const LdfSelectorRecord message = read_selector_message(cursor);
    if (!cursor.failed() && sinks.selector_message) sinks.selector_message(message);
  }
  cursor.leave_list();
}

}  // namespace

LdfHeader read_ldf_header(LdfCursor& cursor) {
  LdfHeader header;
  cursor.set_region("the header");
  cursor.take_int4("magic", LdfFieldKind::kMagic);
  header.format_bytes = cursor.take_bytes("format bytes", LdfFieldKind::kBytes, 4);
  skip_reserved(cursor, qzlog::ldf::kVersionTagOffset);
  header.version_tag = cursor.take_bytes("version tag", LdfFieldKind::kTag, qzlog::ldf::kVersionTagSize);
  skip_reserved(cursor, qzlog::ldf::kGlobalCountOffset);
  header.global_count = cursor.take_int4("number of global attributes");
  header.global_offset = cursor.take_int4("offset of the global attributes", LdfFieldKind::kOffset);
  header.entry_count = cursor.take_int4("number of pairs in the entry map");
  skip_reserved(cursor, qzlog::ldf::kEntryMapOffsetOffset);
  header.entry_map_offset = cursor.take_int4("offset of the entry map", LdfFieldKind::kOffset);
  skip_reserved(cursor, qzlog::ldf::kHeaderSize);
  return header;
}

LdfAttributeRecord read_ldf_attribute(LdfCursor& cursor) {
  LdfAttributeRecord attribute;
  attribute.offset = cursor.offset();
  attribute.name = cursor.take_text("name");
  attribute.type_code = cursor.take_int4("type", LdfFieldKind::kType);
  attribute.redirect = cursor.take_text("redirect");
  return attribute;
}

void read_ldf_globals(LdfCursor& cursor, std::uint32_t count, const LdfAttributeSink& sink) {
  cursor.set_region("the global attributes");
  for (std::uint32_t i = 0; i < count && !cursor.failed(); ++i) {
    cursor.set_item("globals", i);
    const LdfAttributeRecord global = read_ldf_attribute(cursor);
    if (!cursor.failed() && sink) sink(global);
  }
}

LdfPair read_ldf_pair(LdfCursor& cursor) {
  cursor.set_region("the entry map");
  LdfPair pair;
  pair.id = cursor.take_int4("entry ID");
  pair.record_offset = cursor.take_int4("record offset", LdfFieldKind::kOffset);
  return pair;
}

LdfEntryRecord read_ldf_entry(LdfCursor& cursor) {
  std::vector<LdfAttributeRecord> attributes;
  std::vector<LdfSelectorRecord> selector_messages;
  LdfEntryRecord entry =
      read_ldf_entry(cursor, {[&](const LdfAttributeRecord& attribute) { attributes.push_back(attribute); },
                              [&](const LdfSelectorRecord& message) { selector_messages.push_back(message); }});
  entry.attributes = std::move(attributes);
  entry.selector_messages = std::move(selector_messages);
  return entry;
}

LdfEntryRecord read_ldf_entry(LdfCursor& cursor, const LdfItemSinks& sinks) {
  LdfEntryRecord entry;
  entry.offset = cursor.offset();
  cursor.set_region("an entry record");
  entry.id = cursor.take_int4("entry ID");
  entry.word = cursor.take_int4("word");
  entry.mask = cursor.take_int4("mask", LdfFieldKind::kBits);
  entry.message_id = cursor.take_text("message ID");
  cursor.set_region("a message text");
  entry.message = cursor.take_text("message");
  cursor.set_region("an entry record");
  entry.selector = cursor.take_text("selector attribute");
  read_attributes(cursor, sinks, entry);
  read_selector_messages(cursor, sinks, entry);
  entry.size = cursor.offset() - entry.offset;
  entry.cut = cursor.damage();
  return entry;
}

}  // namespace qzlog_compiler
