#include "tools/compiler/model/attribute_type.h"

#include <array>
#include <utility>

#include "message/format_types.h"

namespace qzlog_compiler {
namespace {

constexpr std::string_view kTypePrefix = "Type";

constexpr std::array<std::pair<std::string_view, qz_AttributeType>, 5> kStandardFields = {{
    {"PRODUCT_ID", TypeMBChar32},
    {"COMPONENT_ID", TypeMBChar32},
    {"VERSION_ID", TypeMBChar32},
    {"COMPONENT_VERSION_ID", TypeMBChar32},
    {"TIMESTAMP", TypeTimestamp},
}};

struct FormatList {
  std::array<char, kFormatCharacters.size()> characters{};
  std::size_t count = 0;
};

constexpr FormatList list_accepted_formats(qz_AttributeType type) {
  constexpr std::string_view kByPreference = "dufsDTCP";
  static_assert(kByPreference.size() == kFormatCharacters.size());
  FormatList list;
  for (const char format : kByPreference) {
    const qzlog::AttributeTypeSet accepted = qzlog::accepted_types(qzlog::message_format_kind(format));
    if ((accepted >> type & 1U) != 0) list.characters[list.count++] = format;
  }
  return list;
}

using FormatLists = std::array<FormatList, TypeTimestamp + 1>;

constexpr FormatLists list_accepted_formats() {
  FormatLists lists;
  unsigned code = TypeUnknown;
  while (++code < lists.size()) lists[code] = list_accepted_formats(static_cast<qz_AttributeType>(code));
  return lists;
}

constexpr FormatLists kAcceptedFormats = list_accepted_formats();

}  // namespace

std::optional<qz_AttributeType> find_attribute_type(std::string_view name) {
  for (const qz_AttributeTypeName* row = AttributeTypeList; row->name != nullptr; ++row) {
    const std::string_view full_name = row->name;
    if (name == full_name || name == full_name.substr(kTypePrefix.size())) return row->code;
  }
  return std::nullopt;
}

std::string_view short_type_name(qz_AttributeType type) {
  return std::string_view(_qz_LOG_get_attribute_type_string(type)).substr(kTypePrefix.size());
}

std::string all_type_names() {
  std::string names;
  for (const qz_AttributeTypeName* row = AttributeTypeList; row->name != nullptr; ++row) {
    if (!names.empty()) names += ", ";
    names += short_type_name(row->code);
  }
  return names;
}

std::string listed_formats(std::string_view formats) {
  std::string list;
  for (const char format : formats) {
    if (!list.empty()) list += ' ';
    list += format;
  }
  return list;
}

bool is_known_format(char format) { return qzlog::message_format_kind(format) != qzlog::MessageFormatKind::kUnknown; }

std::string_view accepted_formats(qz_AttributeType type) {
  const auto code = static_cast<std::size_t>(type);
  if (code >= kAcceptedFormats.size()) return "";
  const FormatList& list = kAcceptedFormats[code];
  return {list.characters.data(), list.count};
}

std::string_view default_formats(qz_AttributeType type) {
  if (type == TypeTimestamp) return "DT";
  if (type == TypeTime) return "T";
  return accepted_formats(type).substr(0, 1);
}

std::optional<std::uint32_t> selector_value_limit(qz_AttributeType type) {
  switch (type) {
    case TypeUInt1:
      return 0xFF;
    case TypeUInt2:
      return 0xFFFF;
    case TypeUInt4:
      return 0xFFFFFFFF;
    default:
      return std::nullopt;  // read as 4 bytes unsigned, which fails for the type
  }
}

std::span<const std::string_view> standard_field_names() {
  static constexpr auto kNames = [] {
    std::array<std::string_view, kStandardFields.size()> names;
    for (std::size_t i = 0; i < names.size(); ++i) names[i] = kStandardFields[i].first;
    return names;
  }();
  return kNames;
}

std::optional<qz_AttributeType> find_standard_field(std::string_view name) {
  for (const auto& [field, type] : kStandardFields) {
    if (name == field) return type;
  }
  return std::nullopt;
}

}  // namespace qzlog_compiler
