#include "tools/diff/aux_collision.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "tools/compiler/source/aux_merge.h"
#include "tools/report/finding_printer.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::DiffChange;
using qzlog_compiler::DiffRule;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::Finding;
using qzlog_compiler::Findings;
using qzlog_compiler::ModelIndex;
using qzlog_compiler::RenderingPaths;
using qzlog_compiler::SelectorMessage;
using qzlog_compiler::TextPlace;

/// Gives every entry of a compiled file, which knows no places, the line of its number, to find it again.
void number_entries(DefinitionModel& model) {
  std::uint32_t number = 0;
  for (EntryDefinition& entry : model.entries) {
    entry.position = {++number, 1};
    entry.selector.position = entry.position;
    for (AttributeDefinition& attribute : entry.attributes) attribute.position = entry.position;
    for (SelectorMessage& message : entry.selector.messages) {
      message.index_position = entry.position;
      message.value_position = entry.position;
    }
  }
}

/// The entry in which a place stands: the last one that begins before it. Entries stand in the order of their places.
const EntryDefinition* find_entry_at(const DefinitionModel& model, TextPlace place) {
  const auto next =
      std::upper_bound(model.entries.begin(), model.entries.end(), place,
                       [](TextPlace wanted, const EntryDefinition& entry) { return wanted < entry.position; });
  return next == model.entries.begin() ? nullptr : &*std::prev(next);
}

/// What the compiler says of a source, said of the entries of a compiled file.
void check_compiled_aux(Definitions& aux, const Definitions& standard) {
  number_entries(aux.model);
  Findings findings(aux.shown_path);
  check_aux_merge(aux.model, ModelIndex(standard.model), standard.shown_path, findings);
  aux.diagnostics = findings.take_sorted();
  for (Finding& finding : aux.diagnostics) {
    const EntryDefinition* const entry = find_entry_at(aux.model, finding.place);
    if (entry != nullptr) finding.entry_id = entry->id;
    finding.place = {};
  }
}

std::optional<std::uint32_t> entry_id_of(const Finding& finding, const DefinitionModel& model) {
  if (finding.entry_id) return finding.entry_id;
  const EntryDefinition* const entry = find_entry_at(model, finding.place);
  return entry != nullptr ? std::optional(entry->id) : std::nullopt;
}

/// Changes name their entries themselves.
std::string text_of(Finding finding) {
  finding.entry_id.reset();
  return finding_heading(finding);
}

}  // namespace

Definitions check_aux_file(const DefinitionFile& aux, const Definitions& standard, RenderingPaths path) {
  Definitions checked = read_errors_only(aux, {.standard = &standard, .path = path});
  if (aux.is_source || !checked.ok()) return checked;
  check_compiled_aux(checked, standard);
  std::erase_if(checked.diagnostics, std::not_fn(qzlog_compiler::is_error));
  return checked;
}

std::vector<DiffChange> find_aux_collisions(const DefinitionFile& aux, const Definitions& new_definitions,
                                            RenderingPaths path) {
  const Definitions checked = check_aux_file(aux, new_definitions, path);
  const ModelIndex index(new_definitions.model);
  std::vector<DiffChange> changes;
  for (const Finding& finding : checked.diagnostics) {
    DiffChange change{DiffRule::kAuxCollision, {}, std::nullopt, text_of(finding)};
    const std::optional<std::uint32_t> entry_id = entry_id_of(finding, checked.model);
    if (entry_id) change.place.new_entry = index.find_entry(*entry_id);
    changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace qzlog_tool
