#include "tools/compiler/file/ldf_writer.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "definitions/definition_format.h"

namespace qzlog_compiler {
namespace {

std::uint32_t checked_count(std::size_t count, const char* what) {
  if (count > kMaximumCount) throw std::length_error(std::string("more than 255 ") + what);
  return static_cast<std::uint32_t>(count);
}

std::uint32_t checked_size(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("a compiled definition file holds at most 4 GiB");
  }
  return static_cast<std::uint32_t>(size);
}

void put_int4(std::string& out, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) out[offset + i] = static_cast<char>(value >> (24 - 8 * i));
}

void append_int4(std::string& out, std::uint32_t value) {
  out.append(4, '\0');
  put_int4(out, out.size() - 4, value);
}

void append_string(std::string& out, const std::string& text) {
  if (text.empty()) {
    append_int4(out, 0);
    return;
  }
  append_int4(out, checked_size(text.size() + 1));
  out.append(text.c_str(), text.size() + 1);
}

void append_attribute(std::string& out, const AttributeDefinition& attribute) {
  append_string(out, attribute.name);
  append_int4(out, static_cast<std::uint32_t>(attribute.type));
  append_string(out, attribute.redirect);
}

void append_selector_message(std::string& out, const SelectorMessage& message) {
  append_int4(out, message.index);
  append_int4(out, message.value);
  append_string(out, message.id);
  append_string(out, message.message.stored);
}

void append_entry(std::string& out, const EntryDefinition& entry) {
  append_int4(out, entry.id);
  append_int4(out, entry.word);
  append_int4(out, entry.mask);
  append_string(out, entry.message_id);
  append_string(out, entry.message.stored);
  append_string(out, entry.selector.attribute);
  append_int4(out, checked_count(entry.attributes.size(), "attributes in an entry"));
  for (const AttributeDefinition& attribute : entry.attributes) append_attribute(out, attribute);
  append_int4(out, checked_count(entry.selector.messages.size(), "selector messages in an entry"));
  for (const SelectorMessage& message : entry.selector.messages) append_selector_message(out, message);
}

std::string header(const DefinitionModel& model) {
  std::string out(qzlog::ldf::kHeaderSize, '\0');
  put_int4(out, 0, qzlog::ldf::kMagic);
  if (model.version.size() > qzlog::ldf::kVersionTagSize) throw std::length_error("a version of more than 8 bytes");
  out.replace(qzlog::ldf::kVersionTagOffset, model.version.size(), model.version);
  put_int4(out, qzlog::ldf::kGlobalCountOffset, checked_count(model.globals.size(), "global attributes"));
  put_int4(out, qzlog::ldf::kGlobalOffsetOffset, qzlog::ldf::kHeaderSize);
  put_int4(out, qzlog::ldf::kEntryCountOffset, checked_size(model.entries.size()));
  return out;
}

std::vector<const EntryDefinition*> sorted_entries(const DefinitionModel& model) {
  std::vector<const EntryDefinition*> entries;
  entries.reserve(model.entries.size());
  for (const EntryDefinition& entry : model.entries) entries.push_back(&entry);
  std::stable_sort(entries.begin(), entries.end(),
                   [](const EntryDefinition* a, const EntryDefinition* b) { return a->id < b->id; });
  return entries;
}

}  // namespace

std::string write_ldf(const DefinitionModel& model) {
  std::string out = header(model);
  for (const AttributeDefinition& global : model.globals) append_attribute(out, global);
  std::size_t pair_offset = out.size();
  put_int4(out, qzlog::ldf::kEntryMapOffsetOffset, checked_size(pair_offset));
  out.append(model.entries.size() * qzlog::ldf::kMapPairSize, '\0');
  for (const EntryDefinition* const entry : sorted_entries(model)) {
    put_int4(out, pair_offset, entry->id);
    put_int4(out, pair_offset + 4, checked_size(out.size()));
    pair_offset += qzlog::ldf::kMapPairSize;
    append_entry(out, *entry);
  }
  checked_size(out.size());
  return out;
}

}  // namespace qzlog_compiler
