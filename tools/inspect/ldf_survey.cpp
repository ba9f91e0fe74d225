#include "tools/inspect/ldf_survey.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

#include "definitions/definition_format.h"
#include "tools/compiler/file/ldf_reader.h"

namespace qzlog_compiler {
namespace {

/// Records that overlap are read as often as the map asks for them, until that is this many times the file.
constexpr std::size_t kReadsOfTheFile = 4;

std::string entry_text(std::uint32_t id) { return "entry " + std::to_string(id); }

/// The places of the pairs in the order of a key, and of the map where keys are equal.
template <class Key>
std::vector<std::uint32_t> sorted_places(const std::vector<LdfSurveyedPair>& pairs, Key key) {
  std::vector<std::uint32_t> places(pairs.size());
  std::iota(places.begin(), places.end(), 0U);
  std::sort(places.begin(), places.end(), [&](std::uint32_t a, std::uint32_t b) {
    return std::tuple(key(pairs[a]), a) < std::tuple(key(pairs[b]), b);
  });
  return places;
}

bool has_wrong_id(const LdfSurveyedPair& pair, const LdfEntryRecord& record) {
  return record.size >= sizeof record.id && record.id != pair.id;
}

}  // namespace

LdfSurvey::LdfSurvey(std::string_view bytes) : bytes_(bytes) {
  LdfCursor cursor(bytes_, 0);
  header_ = read_ldf_header(cursor);
  header_damaged_ = cursor.failed();
  if (bytes_.size() >= 4 && !looks_like_ldf(bytes_)) add_damage(LdfDamage{0, kWrongMagic});
  add_damage(cursor.damage());
  if (!header_damaged_) {
    survey_globals();
    survey_map();
    mark_replaced();
    survey_records();
    mark_shared();
    survey_names();
    find_overlaps();
  }
  std::stable_sort(damages_.begin(), damages_.end(),
                   [](const LdfDamage& a, const LdfDamage& b) { return a.offset < b.offset; });
}

std::size_t LdfSurvey::pair_offset(std::size_t pair) const {
  return header_.entry_map_offset + pair * qzlog::ldf::kMapPairSize;
}

void LdfSurvey::add_damage(std::optional<LdfDamage> damage) {
  if (!damage) return;
  ++damage_count_;
  if (damages_.size() < kKeptDamages) damages_.push_back(std::move(*damage));
}

void LdfSurvey::survey_globals() {
  LdfCursor cursor(bytes_, header_.global_offset);
  read_ldf_globals(cursor, header_.global_count, {});
  globals_end_ = cursor.offset();
  globals_cut_ = cursor.failed();
  add_damage(cursor.damage());
}

void LdfSurvey::survey_map() {
  LdfCursor cursor(bytes_, header_.entry_map_offset);
  const std::size_t left = bytes_.size() - std::min<std::size_t>(bytes_.size(), header_.entry_map_offset);
  pairs_.reserve(std::min<std::size_t>(header_.entry_count, left / qzlog::ldf::kMapPairSize));
  for (std::uint32_t i = 0; i < header_.entry_count && !cursor.failed(); ++i) {
    cursor.set_item("pairs", i);
    const LdfPair pair = read_ldf_pair(cursor);
    if (!cursor.failed()) pairs_.push_back({pair.id, pair.record_offset});
  }
  map_end_ = cursor.offset();
  map_cut_ = cursor.failed();
  add_damage(cursor.damage());
}

void LdfSurvey::mark_replaced() {
  const std::vector<std::uint32_t> order = sorted_places(pairs_, [](const LdfSurveyedPair& pair) { return pair.id; });
  for (std::size_t i = 1; i < order.size(); ++i) {
    LdfSurveyedPair& earlier = pairs_[order[i - 1]];
    earlier.replaced = earlier.id == pairs_[order[i]].id;
  }
}

void LdfSurvey::mark_shared() {
  const std::vector<std::uint32_t> order = sorted_places(
      pairs_, [](const LdfSurveyedPair& pair) { return std::tuple(pair.record_offset, pair.wrong_id, pair.replaced); });
  for (std::size_t i = 1; i < order.size(); ++i) {
    LdfSurveyedPair& later = pairs_[order[i]];
    later.shared = later.record_offset == pairs_[order[i - 1]].record_offset;
  }
}

void LdfSurvey::survey_records() {
  std::size_t read_bytes = 0;
  std::size_t unread = 0;
  for (LdfSurveyedPair& pair : pairs_) {
    pair.unread = read_bytes / kReadsOfTheFile > bytes_.size();
    if (pair.unread) {
      ++unread;
      continue;
    }
    const LdfEntryRecord record = read_entry(pair);
    read_bytes += record.size;
    pair.record_size = record.size;
    pair.cut = record.cut.has_value();
    pair.wrong_id = has_wrong_id(pair, record);
    add_damage(damage_of(pair, record));
  }
  if (unread == 0) return;
  add_damage(LdfDamage{header_.entry_map_offset, "entry records overlap",
                       "so much that " + std::to_string(unread) + " of them are not read"});
}

std::vector<LdfAttributeRecord> LdfSurvey::globals() const {
  std::vector<LdfAttributeRecord> globals;
  read_globals([&](const LdfAttributeRecord& global) { globals.push_back(global); });
  return globals;
}

void LdfSurvey::read_globals(const LdfAttributeSink& sink) const {
  if (header_damaged_) return;
  LdfCursor cursor(bytes_, header_.global_offset);
  read_ldf_globals(cursor, header_.global_count, sink);
}

LdfEntryRecord LdfSurvey::entry(const LdfSurveyedPair& pair) const {
  LdfCursor cursor(bytes_, pair.record_offset);
  return read_ldf_entry(cursor);
}

LdfEntryRecord LdfSurvey::read_entry(const LdfSurveyedPair& pair, const LdfItemSinks& sinks) const {
  LdfCursor cursor(bytes_, pair.record_offset);
  return read_ldf_entry(cursor, sinks);
}

std::optional<LdfDamage> LdfSurvey::damage_of(const LdfSurveyedPair& pair, const LdfEntryRecord& record) const {
  if (has_wrong_id(pair, record)) {
    return LdfDamage{record.offset, "the record of " + entry_text(pair.id) + " has another ID",
                     "it is " + std::to_string(record.id)};
  }
  std::optional<LdfDamage> damage = record.cut;
  if (damage) damage->detail = entry_text(pair.id) + ": " + damage->detail;
  return damage;
}

std::vector<LdfRegion> LdfSurvey::regions() const {
  std::vector<LdfRegion> found;
  found.reserve(pairs_.size() + 3);
  const auto add = [&](LdfRegion region) {
    region.end = region.cut ? bytes_.size() : std::min(region.end, bytes_.size());
    if (region.begin < region.end) found.push_back(region);
  };
  add({0, qzlog::ldf::kHeaderSize, LdfRegion::kHeader, 0, header_damaged_});
  if (header_damaged_) return found;
  if (header_.global_count != 0) add({header_.global_offset, globals_end_, LdfRegion::kGlobals, 0, globals_cut_});
  if (header_.entry_count != 0) add({header_.entry_map_offset, map_end_, LdfRegion::kMap, 0, map_cut_});
  for (std::uint32_t i = 0; i < pairs_.size(); ++i) {
    const LdfSurveyedPair& pair = pairs_[i];
    if (!pair.unread && !pair.shared)
      add({pair.record_offset, pair.record_offset + pair.record_size, LdfRegion::kRecord, i, pair.cut});
  }
  if (names_ && names_->has_trailer) add({names_->begin, bytes_.size(), LdfRegion::kNames, 0, false});
  std::sort(found.begin(), found.end(), [](const LdfRegion& a, const LdfRegion& b) {
    return std::tie(a.begin, a.kind, a.pair) < std::tie(b.begin, b.kind, b.pair);
  });
  return found;
}

void LdfSurvey::survey_names() {
  std::size_t records_end = qzlog::ldf::kHeaderSize;
  for (const LdfRegion& region : regions()) records_end = std::max(records_end, region.end);
  names_ = read_ldf_names(bytes_, records_end);
}

/// A region that is cut has no end of its own, so that it is not said to overlap what follows.
void LdfSurvey::find_overlaps() {
  const std::vector<LdfRegion> all = regions();
  const LdfRegion* farthest = nullptr;
  for (const LdfRegion& region : all) {
    if (farthest != nullptr && region.begin < farthest->end) {
      add_damage(LdfDamage{region.begin, region_name(region) + " overlaps " + region_name(*farthest),
                           "which begins at offset " + std::to_string(farthest->begin)});
    }
    if (!region.cut && (farthest == nullptr || region.end > farthest->end)) farthest = &region;
  }
}

std::optional<LdfDamage> LdfSurvey::walk(const LdfRegion& region, std::size_t end, const LdfFieldSink& sink) const {
  LdfCursor cursor(bytes_.substr(0, end), region.begin, &sink);
  switch (region.kind) {
    case LdfRegion::kHeader:
      read_ldf_header(cursor);
      break;
    case LdfRegion::kGlobals:
      read_ldf_globals(cursor, header_.global_count, {});
      break;
    case LdfRegion::kMap:
      for (std::uint32_t i = 0; i < header_.entry_count && !cursor.failed(); ++i) {
        cursor.set_item("pairs", i);
        read_ldf_pair(cursor);
      }
      break;
    case LdfRegion::kRecord:
      return damage_of(pairs_[region.pair], read_ldf_entry(cursor, {}));
    case LdfRegion::kNames:
      return walk_ldf_names(bytes_, *names_, end, sink);
  }
  return cursor.damage();
}

std::string LdfSurvey::region_name(const LdfRegion& region) const {
  switch (region.kind) {
    case LdfRegion::kHeader:
      return "the header";
    case LdfRegion::kGlobals:
      return "the list of global attributes";
    case LdfRegion::kMap:
      return "the entry map";
    case LdfRegion::kNames:
      return "the names section";
    default:
      return "the record of " + entry_text(pairs_[region.pair].id);
  }
}

}  // namespace qzlog_compiler
