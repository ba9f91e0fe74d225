#ifndef QZLOG_TOOLS_CHOICE_KNOWN_DEFINITIONS_H
#define QZLOG_TOOLS_CHOICE_KNOWN_DEFINITIONS_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/logattrib.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// Attribute types, a bit for each code.
class TypeSet {
 public:
  constexpr TypeSet() = default;
  constexpr TypeSet(qz_AttributeType first, qz_AttributeType last)
      : bits_((2U << static_cast<unsigned>(last)) - (1U << static_cast<unsigned>(first))) {}

  constexpr void add(qz_AttributeType type) { bits_ |= 1U << (static_cast<unsigned>(type) & kMost); }
  constexpr bool has(qz_AttributeType type) const { return (bits_ >> (static_cast<unsigned>(type) & kMost) & 1U) != 0; }
  constexpr bool meets(TypeSet other) const { return (bits_ & other.bits_) != 0; }
  constexpr bool is_within(TypeSet other) const { return (bits_ & ~other.bits_) == 0; }
  constexpr friend bool operator==(TypeSet, TypeSet) = default;

 private:
  static constexpr unsigned kMost = 31;

  std::uint32_t bits_ = 0;
};

inline constexpr TypeSet kBoolTypes(TypeBool, TypeBool);
inline constexpr TypeSet kIntegerTypes(TypeUInt1, TypeSInt4);
inline constexpr TypeSet kFloatTypes(TypeFloat, TypeFloat);
inline constexpr TypeSet kTextTypes(TypeChar32, TypeMBChar2K);
inline constexpr TypeSet kTimeTypes(TypeDate, TypeTimestamp);

/// An attribute over all entries and globals.
struct KnownAttribute {
  TypeSet types;
  std::map<qz_AttributeType, std::string> places;  ///< of each type the first: "entry 1001", "the globals"
};

/// An event over all definition files.
struct KnownEvent {
  std::vector<std::string> names;    ///< each once; empty where no file knows one
  std::vector<std::uint32_t> masks;  ///< each once
};

/// What the definitions that entries are read against have in common, of one file or of several.
class KnownDefinitions {
 public:
  void add(const qzlog_compiler::DefinitionModel& model);

  /// Null for one that no file defines.
  const KnownAttribute* find_attribute(std::string_view name) const;
  const KnownEvent* find_event(std::uint32_t id) const;
  /// The first of its names; empty where none is known.
  std::string_view find_name(std::uint32_t id) const;

  const std::map<std::string, KnownAttribute, std::less<>>& attributes() const { return attributes_; }
  const std::map<std::uint32_t, KnownEvent>& events() const { return events_; }
  std::vector<std::string_view> attribute_names() const;
  std::vector<std::string_view> event_names() const;
  /// Every event has a name.
  bool knows_all_names() const;

 private:
  void add_attribute(const qzlog_compiler::AttributeDefinition& attribute, const std::string& place);

  std::map<std::string, KnownAttribute, std::less<>> attributes_;
  std::map<std::uint32_t, KnownEvent> events_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_KNOWN_DEFINITIONS_H
