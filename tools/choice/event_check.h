#ifndef QZLOG_TOOLS_CHOICE_EVENT_CHECK_H
#define QZLOG_TOOLS_CHOICE_EVENT_CHECK_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/choice/known_definitions.h"
#include "tools/choice/wildcard.h"

namespace qzlog_tool {

/// What is wrong with asking for an event that no line can be of.
struct NoSuchEvent {
  std::string text;
  std::string hint;  ///< may be empty
};

/// Nothing where an event has the ID.
std::optional<NoSuchEvent> find_fault_of_id(std::uint32_t id, const KnownDefinitions& known);
/// Nothing where an event has a name that `pattern`, written as `text`, matches, or may have one: where some events
/// have no name, a line may bring it.
std::optional<NoSuchEvent> find_fault_of_name(const std::string& text, const Wildcard& pattern,
                                              const KnownDefinitions& known);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_EVENT_CHECK_H
