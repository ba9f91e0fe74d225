#include "tools/choice/event_check.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

std::string id_hint(const std::string& id, const KnownDefinitions& known) {
  std::vector<std::string> texts;
  for (const auto& [own, event] : known.events()) texts.push_back(std::to_string(own));
  if (texts.empty()) return "";
  const std::vector<std::string_view> ids(texts.begin(), texts.end());
  return qzlog_compiler::did_you_mean(id, ids, "IDs are from " + texts.front() + " to " + texts.back());
}

}  // namespace

std::optional<NoSuchEvent> find_fault_of_id(std::uint32_t id, const KnownDefinitions& known) {
  if (known.find_event(id) != nullptr) return std::nullopt;
  const std::string text = std::to_string(id);
  return NoSuchEvent{"the definitions have no entry " + text, id_hint(text, known)};
}

std::optional<NoSuchEvent> find_fault_of_name(const std::string& text, const Wildcard& pattern,
                                              const KnownDefinitions& known) {
  if (!known.knows_all_names()) return std::nullopt;
  const std::vector<std::string_view> names = known.event_names();
  if (std::any_of(names.begin(), names.end(), [&](std::string_view name) { return pattern.matches(name); })) {
    return std::nullopt;
  }
  return NoSuchEvent{"the definitions have no event " + qzlog_compiler::quoted(text),
                     qzlog_compiler::did_you_mean(text, names)};
}

}  // namespace qzlog_tool
