#include "tools/compiler/file/ldf_names.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "definitions/names_format.h"
#include "definitions/names_trailer.h"
#include "tools/compiler/model/sensitivity.h"

namespace qzlog_compiler {
namespace {

namespace ldf = qzlog::ldf;

constexpr const char* kDamaged = "the names section is damaged";
constexpr std::string_view kMagicBytes = "QNAM";

/// Reads a section from its beginning to its end, and stops at the first thing that is wrong.
class SectionReader {
 public:
  SectionReader(std::string_view bytes, std::size_t begin, std::size_t end, const LdfFieldSink* sink)
      : bytes_(bytes), end_(end), sink_(sink), cursor_(bytes.substr(0, end), begin, sink) {}

  void read(LdfNames& names) {
    cursor_.set_region("the names section");
    if (cursor_.take_int4("magic", LdfFieldKind::kMagic) != ldf::kNamesMagic)
      fail(cursor_, "its magic number is wrong");
    while (!cursor_.failed() && cursor_.offset() < end_) take_part(names);
  }

  const std::optional<LdfDamage>& damage() const { return cursor_.damage(); }

 private:
  static void fail(LdfCursor& cursor, std::string detail) {
    cursor.fail({cursor.offset(), kDamaged, std::move(detail)});
  }

  void take_part(LdfNames& names) {
    const std::uint32_t type = cursor_.take_int4("part type");
    const std::uint32_t size = cursor_.take_int4("part size");
    if (cursor_.failed()) return;
    if (size > end_ - cursor_.offset()) return fail(cursor_, "a part is larger than the section");
    if (type != ldf::kEventsPart && type != ldf::kMarksPart) {
      ++names.unknown_part_count;
      cursor_.take_bytes("unknown part", LdfFieldKind::kBytes, size);
      return;
    }
    bool& seen = type == ldf::kEventsPart ? seen_events_ : seen_marks_;
    if (std::exchange(seen, true)) return fail(cursor_, "a part stands there twice");
    const std::size_t end = cursor_.offset() + size;
    LdfCursor part(bytes_.substr(0, end), cursor_.offset(), sink_);
    part.set_region("a part of the names section");
    if (type == ldf::kEventsPart) {
      take_events(part, end, names);
    } else {
      take_marks(part, end, names);
    }
    if (!part.failed() && part.offset() != end) fail(part, "a part goes on behind its last item");
    if (part.failed()) return cursor_.fail(*part.damage());
    cursor_ = LdfCursor(bytes_.substr(0, end_), end, sink_);
    cursor_.set_region("the names section");
  }

  static std::uint32_t take_count(LdfCursor& part, std::size_t end, std::size_t smallest_item) {
    const std::uint32_t count = part.take_int4("count");
    if (!part.failed() && count > (end - part.offset()) / smallest_item) fail(part, "a count is too large");
    return part.failed() ? 0 : count;
  }

  static std::string_view take_text(LdfCursor& part, std::string_view name) {
    const LdfText text = part.take_text(name);
    if (!part.failed() && !text.is_regular()) fail(part, "a text does not end with its one zero byte");
    return part.failed() ? std::string_view() : text.text();
  }

  static void take_events(LdfCursor& part, std::size_t end, LdfNames& names) {
    const std::uint32_t count = take_count(part, end, ldf::kSmallestEvent);
    for (std::uint32_t i = 0; i < count && !part.failed(); ++i) {
      part.set_item("events", i);
      LdfNamedEvent event;
      event.offset = part.offset();
      event.id = part.take_int4("ID");
      event.name = take_text(part, "name");
      event.summary = take_text(part, "summary");
      if (part.failed()) return;
      if (event.name.empty()) return fail(part, "a name is empty");
      if (i != 0 && event.id <= names.events.back().id)
        return fail(part, "the events are not in the order of their IDs");
      names.events.push_back(event);
    }
  }

  static void take_marks(LdfCursor& part, std::size_t end, LdfNames& names) {
    const std::uint32_t count = take_count(part, end, ldf::kSmallestMark);
    for (std::uint32_t i = 0; i < count && !part.failed(); ++i) {
      part.set_item("marks", i);
      LdfMarkedAttribute mark;
      mark.offset = part.offset();
      mark.owner = part.take_int4("owner");
      mark.entry_id = part.take_int4("entry ID");
      mark.name = take_text(part, "attribute");
      mark.mark = part.take_int4("mark");
      if (part.failed()) return;
      if (mark.owner > ldf::kEntryMark || (mark.is_global() && mark.entry_id != 0))
        return fail(part, "a mark is no one's");
      if (mark.mark == 0) return fail(part, "a mark says nothing");
      if (i != 0 && key_of(mark) <= key_of(names.marks.back())) return fail(part, "the marks are not in order");
      names.marks.push_back(mark);
    }
  }

  static std::tuple<std::uint32_t, std::uint32_t, std::string_view> key_of(const LdfMarkedAttribute& mark) {
    return {mark.owner, mark.entry_id, mark.name};
  }

  std::string_view bytes_;
  std::size_t end_;
  const LdfFieldSink* sink_;
  LdfCursor cursor_;
  bool seen_events_ = false;
  bool seen_marks_ = false;
};

std::string_view last_bytes(std::string_view bytes) {
  return bytes.substr(bytes.size() - std::min(bytes.size(), ldf::kTrailerSize));
}

/// What a section leaves that lost its trailer, or its beginning: one of the two magic numbers, or what was not cut off
/// of the first.
std::optional<LdfNames> find_remains(std::string_view bytes, std::size_t records_end) {
  if (records_end >= bytes.size()) return std::nullopt;
  const std::string_view behind = bytes.substr(records_end);
  const bool begins = behind.substr(0, kMagicBytes.size()) == kMagicBytes.substr(0, behind.size());
  const bool ends = behind.size() >= ldf::kTrailerSize && last_bytes(bytes).starts_with(kMagicBytes);
  if (!begins && !ends) return std::nullopt;
  LdfNames names;
  names.begin = records_end;
  names.damage = LdfDamage{records_end, kDamaged, "its end is missing or damaged"};
  return names;
}

void forget_content(LdfNames& names, LdfDamage damage) {
  names.events.clear();
  names.marks.clear();
  names.unknown_part_count = 0;
  names.damage = std::move(damage);
}

}  // namespace

bool LdfMarkedAttribute::is_global() const { return owner == ldf::kGlobalMark; }

std::optional<LdfNames> read_ldf_names(std::string_view bytes, std::size_t records_end) {
  const std::optional<qzlog::NamesTrailer> trailer = qzlog::read_names_trailer(last_bytes(bytes), bytes.size());
  if (!trailer) return find_remains(bytes, records_end);
  LdfNames names;
  names.begin = trailer->offset;
  names.version = trailer->version;
  names.has_trailer = true;
  const std::string_view section = bytes.substr(trailer->offset, trailer->size);
  if (trailer->version != ldf::kNamesVersion) {
    names.damage = LdfDamage{bytes.size() - ldf::kTrailerSize,
                             "the names section has the version " + std::to_string(trailer->version),
                             "readers know version " + std::to_string(ldf::kNamesVersion)};
  } else if (qzlog::crc32(section) != trailer->checksum) {
    names.damage = LdfDamage{names.begin, kDamaged, "its checksum is wrong"};
  } else {
    SectionReader reader(bytes, names.begin, names.begin + trailer->size, nullptr);
    reader.read(names);
    if (reader.damage()) forget_content(names, {reader.damage()->offset, kDamaged, reader.damage()->detail});
  }
  return names;
}

std::optional<LdfDamage> walk_ldf_names(std::string_view bytes, const LdfNames& names, std::size_t end,
                                        const LdfFieldSink& sink) {
  const std::size_t trailer = bytes.size() - ldf::kTrailerSize;
  LdfNames ignored;
  std::size_t read_end = names.begin;
  const LdfFieldSink note_end = [&](const LdfField& field) {
    read_end = field.offset + field.bytes.size();
    sink(field);
  };
  SectionReader(bytes, names.begin, std::min(trailer, end), &note_end).read(ignored);
  if (end != bytes.size() || read_end != trailer) return names.damage;
  LdfCursor cursor(bytes, trailer, &sink);
  cursor.take_int4("trailer magic", LdfFieldKind::kMagic);
  cursor.take_int4("version of the names");
  cursor.take_int4("offset of the names", LdfFieldKind::kOffset);
  cursor.take_int4("size of the names");
  cursor.take_int4("checksum of the names", LdfFieldKind::kBits);
  cursor.take_int4("checksum of the trailer", LdfFieldKind::kBits);
  return names.damage;
}

void apply_names(const LdfNames& names, DefinitionModel& model) {
  if (names.damage) return;
  model.has_names = true;
  std::unordered_map<std::uint32_t, const LdfNamedEvent*> events;
  for (const LdfNamedEvent& event : names.events) events.emplace(event.id, &event);
  std::unordered_map<std::uint32_t, EntryDefinition*> entries;
  for (EntryDefinition& entry : model.entries) {
    entries.emplace(entry.id, &entry);
    const auto found = events.find(entry.id);
    if (found == events.end()) continue;
    entry.name = found->second->name;
    entry.summary = found->second->summary;
  }
  for (const LdfMarkedAttribute& mark : names.marks) {
    const auto owner = entries.find(mark.entry_id);
    if (!mark.is_global() && owner == entries.end()) continue;
    for (AttributeDefinition& attribute : mark.is_global() ? model.globals : owner->second->attributes) {
      if (attribute.name == mark.name) attribute.sensitivity = sensitivity_of_mark(mark.mark);
    }
  }
}

}  // namespace qzlog_compiler
