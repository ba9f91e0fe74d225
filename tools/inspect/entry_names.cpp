#include "tools/inspect/entry_names.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "tools/compiler/source/scalar_values.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kLongestMadeName = 64;

char name_character(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  const bool allowed = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return allowed ? c : '_';
}

/// The name that the message ID suggests, or one of the entry's ID where it suggests none.
std::string made_name(const EntryDefinition& entry) {
  std::string name = entry.message_id;
  std::transform(name.begin(), name.end(), name.begin(), name_character);
  const bool usable = name.size() <= kLongestMadeName && is_entry_name(name);
  return usable ? name : "ENTRY_" + std::to_string(entry.id);
}

}  // namespace

std::vector<std::string> make_entry_names(const DefinitionModel& model) {
  std::unordered_set<std::string> taken;
  std::vector<std::string> names(model.entries.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    const EntryDefinition& entry = model.entries[i];
    const std::string& fixed = entry.name.empty() ? entry.message_id : entry.name;
    if (is_entry_name(fixed) && taken.insert(fixed).second) names[i] = fixed;
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!names[i].empty()) continue;
    const EntryDefinition& entry = model.entries[i];
    names[i] = made_name(entry);
    while (!taken.insert(names[i]).second) names[i] += "_" + std::to_string(entry.id);
  }
  return names;
}

}  // namespace qzlog_compiler
