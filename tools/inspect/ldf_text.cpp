#include "tools/inspect/ldf_text.h"

#include "definitions/definition_format.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_compiler {

std::string offset_text(std::size_t offset) { return std::to_string(offset) + " (0x" + hexadecimal(offset, 1) + ")"; }

std::string type_text(std::uint32_t code) {
  const std::string_view name = short_type_name(static_cast<qz_AttributeType>(code & qzlog::ldf::kTypeCodeMask));
  const bool plain = code <= qzlog::ldf::kTypeCodeMask && find_attribute_type(name);
  return plain ? std::string(name) : std::string(name) + " (" + std::to_string(code) + ")";
}

std::string shown_text(std::string_view text) { return '"' + qzlog_tool::shown_value(text) + '"'; }

}  // namespace qzlog_compiler
