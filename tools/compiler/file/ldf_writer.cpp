#include "tools/compiler/file/ldf_writer.h"

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>
#include <string_view>
#include <tuple>

#include "definitions/definition_format.h"
#include "definitions/names_format.h"
#include "foundation/crc32.h"

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

void append_part(std::string& section, std::uint32_t type, std::uint32_t count, const std::string& items) {
  if (count == 0) return;
  append_int4(section, type);
  append_int4(section, checked_size(items.size() + 4));
  append_int4(section, count);
  section += items;
}

void append_events(const DefinitionModel& model, std::string& section) {
  std::string items;
  std::uint32_t count = 0;
  for (const EntryDefinition* const entry : sorted_entries(model)) {
    if (entry->name.empty()) continue;
    ++count;
    append_int4(items, entry->id);
    append_string(items, entry->name);
    append_string(items, entry->summary);
  }
  append_part(section, qzlog::ldf::kEventsPart, count, items);
}

/// By owner, ID and name.
using Marks = std::map<std::tuple<std::uint32_t, std::uint32_t, std::string_view>, qzlog::Sensitivity>;

void collect_marks(std::uint32_t owner, std::uint32_t entry_id, const std::vector<AttributeDefinition>& attributes,
                   Marks& marks) {
  for (const AttributeDefinition& attribute : attributes) {
    if (attribute.sensitivity == qzlog::Sensitivity::kKeep) continue;
    marks.insert_or_assign({owner, entry_id, attribute.name}, attribute.sensitivity);
  }
}

void append_marks(const DefinitionModel& model, std::string& section) {
  Marks marks;
  collect_marks(qzlog::ldf::kGlobalMark, 0, model.globals, marks);
  for (const EntryDefinition& entry : model.entries) {
    collect_marks(qzlog::ldf::kEntryMark, entry.id, entry.attributes, marks);
  }
  std::string items;
  for (const auto& [key, sensitivity] : marks) {
    append_int4(items, std::get<0>(key));
    append_int4(items, std::get<1>(key));
    append_string(items, std::string(std::get<2>(key)));
    append_int4(items, static_cast<std::uint32_t>(sensitivity));
  }
  append_part(section, qzlog::ldf::kMarksPart, static_cast<std::uint32_t>(marks.size()), items);
}

void append_trailer(std::size_t section_offset, const std::string& section, std::string& file) {
  const std::size_t begin = file.size();
  append_int4(file, qzlog::ldf::kNamesMagic);
  append_int4(file, qzlog::ldf::kNamesVersion);
  append_int4(file, checked_size(section_offset));
  append_int4(file, checked_size(section.size()));
  append_int4(file, qzlog::crc32(section));
  append_int4(file, qzlog::crc32(std::string_view(file).substr(begin)));
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

void append_names(const DefinitionModel& model, std::string& file) {
  std::string section;
  append_int4(section, qzlog::ldf::kNamesMagic);
  append_events(model, section);
  append_marks(model, section);
  if (section.size() == qzlog::ldf::kNamesMagicSize) return;
  if (section.size() > qzlog::ldf::kLargestNames) {
    throw std::length_error("a names section holds at most 64 MiB; leave it out with --strip");
  }
  const std::size_t offset = file.size();
  file += section;
  append_trailer(offset, section, file);
  checked_size(file.size());
}

}  // namespace qzlog_compiler
