#ifndef QZLOG_TOOLS_INSPECT_LDF_SURVEY_H
#define QZLOG_TOOLS_INSPECT_LDF_SURVEY_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/file/ldf_names.h"
#include "tools/compiler/file/ldf_records.h"

namespace qzlog_compiler {

/// A run of bytes that belongs together. Offsets are clipped to the file.
struct LdfRegion {
  enum Kind { kHeader, kGlobals, kMap, kRecord, kNames };
  std::size_t begin = 0;
  std::size_t end = 0;  ///< of a region that is cut: the end of the file
  Kind kind = kHeader;
  std::uint32_t pair = 0;  ///< of a record: its place in `pairs()`
  bool cut = false;
};

/// A pair of the entry map and what stands at its offset.
struct LdfSurveyedPair {
  std::uint32_t id = 0;
  std::uint32_t record_offset = 0;
  std::size_t record_size = 0;  ///< up to the place where it is cut, if it is
  bool replaced = false;        ///< a later pair has the same ID, and counts
  bool cut = false;
  bool wrong_id = false;
  bool shared = false;  ///< another pair stands for the same record, best one of its ID that counts
  bool unread = false;  ///< the records before it overlap too much; nothing is known of this one
};

/// Everything in a compiled file that can be read, however damaged it is. Global attributes and records are read again
/// when they are asked for, so that memory holds what is asked for alone. Time and memory grow with the file's size
/// alone. `bytes` has to outlive it.
class LdfSurvey {
 public:
  /// So many damages are kept; the others are counted.
  static constexpr std::size_t kKeptDamages = 100;

  explicit LdfSurvey(std::string_view bytes);

  std::string_view bytes() const { return bytes_; }
  const LdfHeader& header() const { return header_; }
  std::vector<LdfAttributeRecord> globals() const;
  /// The same one after the other.
  void read_globals(const LdfAttributeSink& sink) const;
  /// Those that are whole, in the order of the map.
  const std::vector<LdfSurveyedPair>& pairs() const { return pairs_; }
  std::size_t pair_offset(std::size_t pair) const;
  /// None where the file has no names section; a damaged one is none of the damages.
  const std::optional<LdfNames>& names() const { return names_; }
  const std::vector<LdfDamage>& damages() const { return damages_; }
  std::size_t damage_count() const { return damage_count_; }

  LdfEntryRecord entry(const LdfSurveyedPair& pair) const;
  /// The same without its lists, whose items go to the sinks.
  LdfEntryRecord read_entry(const LdfSurveyedPair& pair, const LdfItemSinks& sinks = {}) const;
  /// What is wrong with the record of a pair by itself.
  std::optional<LdfDamage> damage_of(const LdfSurveyedPair& pair, const LdfEntryRecord& record) const;

  /// In the order of their offsets, none of them empty. They may overlap in a damaged file.
  std::vector<LdfRegion> regions() const;
  /// Reads a region field by field, not farther than `end`. Returns what is wrong with it so far.
  std::optional<LdfDamage> walk(const LdfRegion& region, std::size_t end, const LdfFieldSink& sink) const;
  /// "the record of entry 7"
  std::string region_name(const LdfRegion& region) const;

 private:
  void add_damage(std::optional<LdfDamage> damage);
  void survey_globals();
  void survey_map();
  void mark_replaced();
  void survey_records();
  void mark_shared();
  void find_overlaps();
  void survey_names();

  std::string_view bytes_;
  LdfHeader header_;
  bool header_damaged_ = false;
  std::size_t globals_end_ = 0;
  bool globals_cut_ = false;
  std::vector<LdfSurveyedPair> pairs_;
  std::optional<LdfNames> names_;
  std::size_t map_end_ = 0;
  bool map_cut_ = false;
  std::vector<LdfDamage> damages_;
  std::size_t damage_count_ = 0;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_SURVEY_H
