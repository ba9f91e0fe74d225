#include "tools/explain/entry_search.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/number_text.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMostNeighbours = 3;

std::vector<std::string_view> all_names(const DefinitionPair& definitions, const std::vector<std::uint32_t>& ids) {
  std::vector<std::string_view> names;
  for (const std::uint32_t id : ids) {
    for (const auto* const entry : {definitions.find_standard(id), definitions.find_auxiliary(id)}) {
      if (entry != nullptr && !entry->name.empty()) names.emplace_back(entry->name);
    }
  }
  return names;
}

std::string near_names(const std::string& wanted, std::vector<std::string_view> names) {
  std::string text;
  for (std::size_t i = 0; i < kMostNeighbours; ++i) {
    const std::string_view nearest = qzlog_compiler::nearest_word(wanted, names);
    if (nearest.empty()) break;
    text += (text.empty() ? "" : ", ") + std::string(nearest);
    std::erase(names, std::string(nearest));
  }
  return text;
}

std::string near_ids(std::uint32_t wanted, std::vector<std::uint32_t> ids) {
  const auto distance = [wanted](std::uint32_t id) { return id > wanted ? id - wanted : wanted - id; };
  std::sort(ids.begin(), ids.end(),
            [&](std::uint32_t a, std::uint32_t b) { return std::pair(distance(a), a) < std::pair(distance(b), b); });
  ids.resize(std::min(ids.size(), kMostNeighbours));
  std::sort(ids.begin(), ids.end());
  std::string text;
  for (const std::uint32_t id : ids) text += (text.empty() ? "" : ", ") + std::to_string(id);
  return text;
}

[[noreturn]] void refuse(const std::string& what, const char* rule, const std::string& near) {
  throw CommandError(kExitFindings, "the definitions have no entry " + what +
                                        (near.empty() ? "" : "; near it are " + near) + " [" + rule + "]");
}

}  // namespace

std::optional<std::uint32_t> parse_entry_id(std::string_view text) {
  const auto number = qzlog_compiler::parse_unsigned(text, qzlog_compiler::NumberForm::kEither);
  if (!number || *number > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

std::uint32_t find_entry_id(const std::string& text, const DefinitionPair& definitions) {
  const std::vector<std::uint32_t> ids = definitions.entry_ids();
  if (const auto number = parse_entry_id(text)) {
    const bool is_known =
        definitions.find_standard(*number) != nullptr || definitions.find_auxiliary(*number) != nullptr;
    if (!is_known) refuse(std::to_string(*number), "unknown-id", near_ids(*number, ids));
    return *number;
  }
  if (const auto* const entry = definitions.find_by_name(text)) return entry->id;
  const std::vector<std::string_view> names = all_names(definitions, ids);
  if (names.empty() && !ids.empty()) {
    throw CommandError(kExitFindings,
                       "the definitions have no names: these compiled files hold only IDs, give the source of " +
                           qzlog_compiler::quoted(text) + " [unknown-name]");
  }
  refuse(qzlog_compiler::quoted(text), "unknown-name", near_names(text, names));
}

}  // namespace qzlog_tool
