#include "tools/diff/aux_collision.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/aux_merge.h"
#include "tools/report/finding_printer.h"

namespace qzlog_compiler {
namespace {

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

CompileResult check_compiled(const AuxFile& aux, const DefinitionModel& standard) {
  CompileResult result = load_standard(aux.content, aux.name);
  if (!result.ok()) return result;
  number_entries(result.model);
  Findings diagnostics(aux.name);
  check_aux_merge(result.model, ModelIndex(standard), "", diagnostics);
  result.diagnostics = diagnostics.take_sorted();
  return result;
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
  return qzlog_tool::finding_heading(diagnostic);
}

}  // namespace

CompileResult check_aux_file(const AuxFile& aux, const DefinitionModel& standard, MessagePath path) {
  CompileResult result;
  if (looks_like_ldf(aux.content)) {
    result = check_compiled(aux, standard);
  } else {
    CompileOptions options;
    options.path = path;
    options.standard = &standard;
    result = compile_source(aux.content, aux.name, options);
  }
  std::erase_if(result.diagnostics, [](const Finding& found) { return found.severity != Severity::kError; });
  return result;
}

std::vector<DiffChange> find_aux_collisions(const AuxFile& aux, const DefinitionModel& new_model, MessagePath path) {
  const CompileResult result = check_aux_file(aux, new_model, path);
  const ModelIndex index(new_model);
  const bool is_compiled = looks_like_ldf(aux.content);
  std::vector<DiffChange> changes;
  for (const Finding& diagnostic : result.diagnostics) {
    DiffChange change{DiffRule::kAuxCollision, {}, std::nullopt, text_of(diagnostic, is_compiled)};
    const EntryDefinition* const extension = find_entry_at(result.model, diagnostic.place);
    if (extension != nullptr) change.place.new_entry = index.find_entry(extension->id);
    changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace qzlog_compiler
