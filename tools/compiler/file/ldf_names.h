#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_NAMES_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_NAMES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/compiler/file/ldf_cursor.h"
#include "tools/compiler/model/definition_model.h"

/// The names section of a compiled definition file, read field by field (definitions/names_format.h has its form).
namespace qzlog_compiler {

/// Texts view the file's bytes.
struct LdfNamedEvent {
  std::size_t offset = 0;
  std::uint32_t id = 0;
  std::string_view name;
  std::string_view summary;
};

struct LdfMarkedAttribute {
  std::size_t offset = 0;
  std::uint32_t owner = 0;
  std::uint32_t entry_id = 0;  ///< 0 for a global attribute
  std::string_view name;
  std::uint32_t mark = 0;

  bool is_global() const;
};

struct LdfNames {
  std::size_t begin = 0;  ///< where the section begins; its trailer ends the file
  std::uint32_t version = 0;
  std::vector<LdfNamedEvent> events;
  std::vector<LdfMarkedAttribute> marks;
  std::size_t unknown_part_count = 0;
  /// Then the library ignores the section, and there are no events and no marks here. Only `begin` is known of a
  /// section whose trailer is damaged.
  std::optional<LdfDamage> damage;
  bool has_trailer = false;  ///< a whole one, which says where the section is
};

/// None for a file that has no section, nor what is left of one behind its records, which end at `records_end`.
std::optional<LdfNames> read_ldf_names(std::string_view bytes, std::size_t records_end);

/// Hands each field of a section that has a trailer, and those of the trailer, to a sink, not farther than `end`.
/// Returns what is wrong with them.
std::optional<LdfDamage> walk_ldf_names(std::string_view bytes, const LdfNames& names, std::size_t end,
                                        const LdfFieldSink& sink);

/// Gives the entries of a model their names and summaries, and the attributes their marks.
void apply_names(const LdfNames& names, DefinitionModel& model);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_NAMES_H
