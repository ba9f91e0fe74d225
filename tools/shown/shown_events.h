#ifndef QZLOG_TOOLS_SHOWN_SHOWN_EVENTS_H
#define QZLOG_TOOLS_SHOWN_SHOWN_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qzlog/logattrib.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// What definitions say of an event beside what an entry knows itself.
struct ShownEvent {
  std::map<std::string, std::string, std::less<>> summaries =
      {};                                    ///< what it means, by its name: several files may differ
  std::vector<std::string> attributes = {};  ///< its own, in the order of the definitions

  /// Empty where it is not known; one of several.
  std::string_view name() const { return summaries.empty() ? std::string_view() : summaries.begin()->first; }
  /// Empty where it is not known.
  std::string_view summary(std::string_view name) const {
    const auto found = summaries.find(name);
    return found != summaries.end() ? std::string_view(found->second) : std::string_view();
  }
};

/// What is known of the events and attributes that lines may hold.
class ShownEvents {
 public:
  /// Adds what a file defines; what another one said before of an event of that ID and name stays, but for attributes,
  /// which are added.
  /// Nothing of the model is referred to.
  void add(const qzlog_compiler::DefinitionModel& model);

  /// Null for an ID that no file defines. Valid until more is added.
  const ShownEvent* find(std::uint32_t id) const {
    const auto found = events_.find(id);
    return found != events_.end() ? &found->second : nullptr;
  }

  /// The names of the attributes that every entry may have.
  const std::vector<std::string>& globals() const { return globals_; }
  /// Whether some event, or every one, may have an attribute of this name.
  bool has_attribute(std::string_view name) const { return attributes_.contains(name); }
  /// The type of the first that was added; TypeUnknown for a name without attribute.
  qz_AttributeType type_of(std::string_view name) const;
  /// The names of all attributes, sorted. Valid until more is added.
  std::vector<std::string_view> attribute_names() const;

  /// The columns of the longest name of an event.
  std::size_t widest_name() const { return widest_name_; }
  /// The digits of the largest ID.
  std::size_t widest_id() const { return widest_id_; }

 private:
  void add(const std::vector<qzlog_compiler::AttributeDefinition>& attributes, std::vector<std::string>& names);

  std::unordered_map<std::uint32_t, ShownEvent> events_;
  std::map<std::string, qz_AttributeType, std::less<>> attributes_;
  std::vector<std::string> globals_;
  std::size_t widest_name_ = 0;
  std::size_t widest_id_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOWN_EVENTS_H
