#ifndef QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H
#define QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H

#include <cstdint>
#include <sstream>
#include <string>

#include "tools/compiler/model/definition_model.h"

namespace model_text_parts {

inline std::string hexadecimal(std::uint32_t value) {
  std::ostringstream out;
  out << "0x" << std::hex << std::uppercase << value;
  return out.str();
}

inline void describe_attribute(std::ostream& out, const char* what,
                               const qzlog_compiler::AttributeDefinition& attribute) {
  out << what << ' ' << attribute.name << ' ' << _qz_LOG_get_attribute_type_string(attribute.type);
  if (!attribute.redirect.empty()) out << " -> " << attribute.redirect;
  if (attribute.sensitivity == qzlog::Sensitivity::kHash) out << " (hash)";
  if (attribute.sensitivity == qzlog::Sensitivity::kDrop) out << " (drop)";
  out << '\n';
}

inline void describe_entry(std::ostream& out, const qzlog_compiler::EntryDefinition& entry) {
  out << "entry " << entry.id << " mask " << hexadecimal(entry.mask) << " word " << entry.word << '\n';
  out << "  message <" << entry.message_id << "> <" << entry.message.stored << ">\n";
  for (const auto& attribute : entry.attributes) describe_attribute(out, "  attribute", attribute);
  if (!entry.selector.attribute.empty()) out << "  selector " << entry.selector.attribute << '\n';
  for (const auto& message : entry.selector.messages) {
    out << "  selector message " << message.index << " for " << message.value << " <" << message.id << "> <"
        << message.message.stored << ">\n";
  }
}

}  // namespace model_text_parts

/// What a compiled file can hold of a model, as lines of text: two models with the same text have the same records.
inline std::string model_text(const qzlog_compiler::DefinitionModel& model) {
  std::ostringstream out;
  out << "version " << model.version << '\n';
  for (const auto& global : model.globals) model_text_parts::describe_attribute(out, "global", global);
  for (const auto& entry : model.entries) model_text_parts::describe_entry(out, entry);
  return out.str();
}

#endif  // QZLOG_TESTS_TOOLS_COMPILER_MODEL_TEXT_H
