#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_STORED_TEMPLATE_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_STORED_TEMPLATE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_compiler {

/// The two ways in which the library renders, each with its own way to cut a stored template into tokens.
enum class RenderingPath { kIcu, kNarrow };

/// A piece of a stored template: literal text, or a reference to an attribute.
struct TemplatePart {
  enum class Kind { kText, kReference };

  Kind kind = Kind::kText;
  std::string text;        ///< what is shown (narrow), what goes into ICU's pattern (ICU), or the attribute's name
  char format = '\0';      ///< of a reference
  std::size_t offset = 0;  ///< in the stored template, in bytes: of the text, or of the reference's percent sign

  bool is_reference() const { return kind == Kind::kReference; }
};

struct StoredTemplate {
  std::vector<TemplatePart>
      parts;            ///< without texts that never show, such as an escaped percent sign on the narrow path
  std::string failure;  ///< why every rendering of the template fails, empty when it need not
};

/// Cuts a stored template as the library does on that path, oddities included. `stored` is UTF-8 for the ICU form.
StoredTemplate cut_template(std::string_view stored, RenderingPath form);

/// Whether the narrow path fails at a percent sign that ends the template, with an exception that is not one of logging
/// (`QZX_index_out_of_bounds`).
bool ends_in_open_percent(std::string_view stored);

/// Only the references, those with an unknown format, which the library leaves out of the message, included.
std::vector<TemplatePart> find_references(std::string_view stored, RenderingPath form);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_STORED_TEMPLATE_H
