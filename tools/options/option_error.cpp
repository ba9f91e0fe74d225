#include "tools/options/option_error.h"

#include <cstdint>

#include "tools/compiler/text/line_cut.h"
#include "tools/report/source_excerpt.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

void refuse_option(std::string_view option, std::string_view value, std::size_t place, std::string_view reason,
                   std::string_view hint) {
  std::string text = std::string(option).append(": ").append(reason);
  const std::size_t column = qzlog_compiler::character_count(value.substr(0, place)) + 1;
  if (const auto excerpt = qzlog_compiler::make_excerpt(value, static_cast<std::uint32_t>(column))) {
    text.append("\n  ").append(excerpt->line).append("\n  ").append(excerpt->caret, ' ') += '^';
  }
  if (!hint.empty()) text.append("\n  hint: ").append(hint);
  throw CommandError(kExitCannotRun, text);
}

}  // namespace qzlog_tool
