#include "tests/tools/compiler/model_text.h"

#include <cstdint>
#include <sstream>

namespace {

std::string hexadecimal(std::uint32_t value) {
  std::ostringstream out;
  out << "0x" << std::hex << std::uppercase << value;
  return out.str();
}

void describe_attribute(std::ostream& out, const char* what, const qzlog_compiler::AttributeDefinition& attribute) {
  out << what << ' ' << attribute.name << ' ' << _qz_LOG_get_attribute_type_string(attribute.type);
  if (!attribute.redirect.empty()) out << " -> " << attribute.redirect;
  out << '\n';
}

void describe_entry(std::ostream& out, const qzlog_compiler::EntryDefinition& entry) {
  out << "entry " << entry.id << " mask " << hexadecimal(entry.mask) << " word " << entry.word << '\n';
  out << "  message <" << entry.message_id << "> <" << entry.message.stored << ">\n";
  for (const auto& attribute : entry.attributes) describe_attribute(out, "  attribute", attribute);
  if (!entry.selector.attribute.empty()) out << "  selector " << entry.selector.attribute << '\n';
  for (const auto& message : entry.selector.messages) {
    out << "  selector message " << message.index << " for " << message.value << " <" << message.id << "> <"
        << message.message.stored << ">\n";
  }
}

}  // namespace

std::string model_text(const qzlog_compiler::DefinitionModel& model) {
  std::ostringstream out;
  out << "version " << model.version << '\n';
  for (const auto& global : model.globals) describe_attribute(out, "global", global);
  for (const auto& entry : model.entries) describe_entry(out, entry);
  return out.str();
}
