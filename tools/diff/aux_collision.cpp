#include "tools/diff/aux_collision.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
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
using qzlog_compiler::SourcePosition;
using qzlog_compiler::TextPlace;

/// Gives every entry of a compiled file, which knows no places, the line of its number.
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

/// What the compiler says of a source, said of a compiled file.
void check_compiled_aux(Definitions& aux, const Definitions& standard) {
  number_entries(aux.model);
  Findings diagnostics(aux.shown_path);
  check_aux_merge(aux.model, ModelIndex(standard.model), standard.shown_path, diagnostics);
  aux.diagnostics = diagnostics.take_sorted();
}

/// The entry in which a place stands: the last one that begins before it. Entries stand in the order of their places.
const EntryDefinition* find_entry_at(const DefinitionModel& model, TextPlace place) {
  const auto next =
      std::upper_bound(model.entries.begin(), model.entries.end(), place,
                       [](TextPlace wanted, const EntryDefinition& entry) { return wanted < entry.position; });
  return next == model.entries.begin() ? nullptr : &*std::prev(next);
}

std::string text_of(Finding diagnostic, bool is_compiled) {
  if (is_compiled) diagnostic.place = {};
  return finding_heading(diagnostic);
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
  for (const Finding& diagnostic : checked.diagnostics) {
    DiffChange change{DiffRule::kAuxCollision, {}, std::nullopt, text_of(diagnostic, !aux.is_source)};
    const EntryDefinition* const extension = find_entry_at(checked.model, diagnostic.place);
    if (extension != nullptr) change.place.new_entry = index.find_entry(extension->id);
    changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace qzlog_tool
