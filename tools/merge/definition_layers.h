#ifndef QZLOG_TOOLS_MERGE_DEFINITION_LAYERS_H
#define QZLOG_TOOLS_MERGE_DEFINITION_LAYERS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// Several sets of definitions, dealt out to as few as can stand for them: the library holds one at a time, and going
/// over from one to another takes as long as many lines. An entry that several sets define alike is in one layer, and
/// so are entries of different sets that do not contradict each other. Only those of which there are several lie on
/// top of each other.
class DefinitionLayers {
 public:
  /// Each set is what a standard file and an auxiliary one over it define together.
  explicit DefinitionLayers(std::vector<qzlog_compiler::DefinitionModel> sets);

  /// Each can be loaded; the last one is empty.
  const std::vector<qzlog_compiler::DefinitionModel>& layers() const { return layers_; }

  bool has(std::size_t set, std::uint32_t id) const { return places_[set].contains(id); }
  /// Whether sets define an ID differently.
  bool is_contradicted(std::uint32_t id) const { return contradicted_.contains(id); }
  std::optional<std::uint32_t> find_id(std::size_t set, std::string_view name) const;
  /// The layer that reads entries of an ID as the set defines them; one that does not know the ID where the set does
  /// not, `current` if that is one.
  std::size_t layer_of(std::size_t set, std::uint32_t id, std::size_t current) const;
  /// One that does not know a name that the set does not know either, `current` if that is one.
  std::size_t layer_without(std::string_view name, std::size_t set, std::size_t current) const;

 private:
  struct Index {
    std::unordered_map<std::uint32_t, std::size_t> entries;  // by ID, their places in the model
    std::unordered_map<std::string, std::uint32_t> names;
  };

  static void fold_globals(std::vector<qzlog_compiler::DefinitionModel>& sets);
  void add(const qzlog_compiler::DefinitionModel& set);
  void note_contradictions(const std::unordered_map<std::uint32_t, std::size_t>& places);
  void add_stranger();
  std::size_t layer_for(const qzlog_compiler::EntryDefinition& entry, const qzlog_compiler::DefinitionModel& set);
  std::size_t empty_layer() const { return layers_.size() - 1; }
  bool fits(std::size_t layer, const qzlog_compiler::EntryDefinition& entry) const;

  std::vector<qzlog_compiler::DefinitionModel> layers_;
  std::vector<Index> indexes_;                                          // of the layers
  std::vector<std::unordered_map<std::uint32_t, std::size_t>> places_;  // of each set: the layers of its IDs
  std::vector<std::unordered_map<std::string, std::uint32_t>> names_;   // of each set
  std::unordered_set<std::uint32_t> contradicted_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_DEFINITION_LAYERS_H
