#include "tools/compiler/source/source_loader.h"

#include <array>
#include <optional>
#include <string>
#include <unordered_map>

#include "tools/compiler/source/attribute_list.h"
#include "tools/compiler/source/entry_loader.h"
#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 5> kSourceFields = {
    {{"version", true}, {"product"}, {"globals"}, {"entries", true}, {"accept"}}};

class SourceLoader {
 public:
  SourceLoader(std::string_view source, RenderingPaths path, const ModelIndex* standard, AcceptedWarnings& accepted,
               Findings& diagnostics)
      : accepted_(accepted),
        diagnostics_(diagnostics),
        entry_loader_({source, path, standard, &globals_, &diagnostics, &accepted}) {}

  DefinitionModel load(const YamlNode& root) {
    model_.has_names = true;
    const MappingFields fields(root, kSourceFields, "a definition source", diagnostics_);
    if (const YamlNode* const version = fields.find("version")) {
      model_.version = read_version(*version, diagnostics_).value_or("");
    }
    if (const YamlNode* const product = fields.find("product")) {
      model_.product = read_text(*product, "the product's name", diagnostics_).value_or("");
    }
    // Entries refer to global attributes, wherever the source lists them.
    if (const YamlNode* const globals = fields.find("globals")) {
      model_.globals = load_attribute_list(*globals, AttributeListKind::kGlobal, globals_, diagnostics_);
    }
    if (const YamlNode* const entries = fields.find("entries")) load_entries(*entries);
    if (const YamlNode* const accept = fields.find("accept")) {
      accepted_.load(*accept, AcceptScope::kFile, root, diagnostics_);
    }
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
      const auto [place, added] = ids_.try_emplace(entry.id, entry.position);
      if (!added) {
        diagnostics_
            .error(entry.position, Rule::kDuplicateId,
                   "the ID " + std::to_string(entry.id) + " is the ID of another entry")
            .with_note(place->second, "the first is here");
      }
    }
    if (entry.name.empty()) return;
    const auto [place, added] = names_.try_emplace(entry.name, entry.name_position);
    if (!added) {
      diagnostics_
          .error(entry.name_position, Rule::kDuplicateEntryName, quoted(entry.name) + " is the name of another entry")
          .with_note(place->second, "the first is here");
    }
  }

  AcceptedWarnings& accepted_;
  Findings& diagnostics_;
  DefinitionModel model_;
  AttributeNames globals_;
  EntryLoader entry_loader_;
  std::unordered_map<std::uint32_t, SourcePosition> ids_;
  std::unordered_map<std::string, SourcePosition> names_;
};

}  // namespace

DefinitionModel load_source(std::string_view source, const YamlTree& tree, RenderingPaths path,
                            const ModelIndex* standard, AcceptedWarnings& accepted, Findings& diagnostics) {
  return SourceLoader(source, path, standard, accepted, diagnostics).load(tree.root());
}

}  // namespace qzlog_compiler
