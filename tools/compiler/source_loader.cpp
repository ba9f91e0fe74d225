#include "tools/compiler/source_loader.h"

#include <array>
#include <optional>
#include <string>
#include <unordered_map>

#include "tools/compiler/attribute_list.h"
#include "tools/compiler/entry_loader.h"
#include "tools/compiler/mapping_fields.h"
#include "tools/compiler/scalar_values.h"
#include "tools/compiler/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 3> kSourceFields = {{{"version", true}, {"globals"}, {"entries", true}}};

class SourceLoader {
 public:
  SourceLoader(std::string_view source, MessagePath path, const ModelIndex* standard, Diagnostics& diagnostics)
      : diagnostics_(diagnostics), entry_loader_({source, path, standard, &globals_, &diagnostics}) {}

  DefinitionModel load(const YamlNode& root) {
    const MappingFields fields(root, kSourceFields, "a definition source", diagnostics_);
    if (const YamlNode* const version = fields.find("version")) {
      model_.version = read_version(*version, diagnostics_).value_or("");
    }
    // Entries refer to global attributes, wherever the source lists them.
    if (const YamlNode* const globals = fields.find("globals")) {
      model_.globals = load_attribute_list(*globals, AttributeListKind::kGlobal, globals_, diagnostics_);
    }
    if (const YamlNode* const entries = fields.find("entries")) load_entries(*entries);
    return std::move(model_);
  }

 private:
  void load_entries(const YamlNode& entries) {
    if (entries.kind() != YamlKind::kSequence) {
      report_wrong_type(entries, "a list of entries", diagnostics_);
      return;
    }
    entries.for_each_item([this](const YamlNode& item) {
      LoadedEntry loaded = entry_loader_.load(item);
      check_unique(loaded);
      model_.entries.push_back(std::move(loaded.entry));
    });
  }

  void check_unique(const LoadedEntry& loaded) {
    const EntryDefinition& entry = loaded.entry;
    if (loaded.has_id) {
      const auto [place, added] = ids_.try_emplace(entry.id, entry.position.line);
      if (!added) {
        diagnostics_.error(entry.position, Rule::kDuplicateId,
                           "the ID " + std::to_string(entry.id) + " is the ID of another entry, in line " +
                               std::to_string(place->second));
      }
    }
    if (entry.name.empty()) return;
    const auto [place, added] = names_.try_emplace(entry.name, entry.name_position.line);
    if (!added) {
      diagnostics_.error(
          entry.name_position, Rule::kDuplicateEntryName,
          quoted(entry.name) + " is the name of another entry, in line " + std::to_string(place->second));
    }
  }

  Diagnostics& diagnostics_;
  DefinitionModel model_;
  AttributeNames globals_;
  EntryLoader entry_loader_;
  std::unordered_map<std::uint32_t, std::uint32_t> ids_;  // to lines, like the next
  std::unordered_map<std::string, std::uint32_t> names_;
};

}  // namespace

DefinitionModel load_source(std::string_view source, const YamlTree& tree, MessagePath path, const ModelIndex* standard,
                            Diagnostics& diagnostics) {
  return SourceLoader(source, path, standard, diagnostics).load(tree.root());
}

}  // namespace qzlog_compiler
