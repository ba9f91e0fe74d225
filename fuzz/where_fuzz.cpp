// Reads the first line of the input as an expression that chooses entries, the others as the entries: what the bytes of
// a line tell of it must not contradict what its entry tells.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/raw_line.h"
#include "tools/choice/where.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/system/temporary_folder.h"

using namespace qzlog_tool;

namespace {

constexpr long long kNow = 1795248930;

/// Attributes of each type, some with another one in a second entry.
std::string source() {
  std::string text =
      "version: \"1.0\"\nglobals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, {name: DAYLIGHT_SAVING_ACTIVE, type: "
      "Bool}, {name: Pool, type: Char32}]\n"
      "entries:\n  - {id: 2, name: SECOND, mask: 6, message: x, attributes: [{name: A, type: Char64}, {name: Free, "
      "type: "
      "UInt4}]}\n"
      "  - id: 1\n    name: FIRST\n    message: x\n    attributes: [{name: A, type: SInt4}, {name: Free, type: UInt2}";
  for (const qz_AttributeTypeName* type = AttributeTypeList; type->name != nullptr; ++type) {
    text += std::string(", {name: ") + type->name + ", type: " + type->name + "}";
  }
  return text + "]\n";
}

/// The definitions, which the library has too; again where it has others.
const KnownDefinitions& definitions() {
  static KnownDefinitions known;
  static std::string loaded;
  if (!loaded.empty() && loaded == qz_LOG_LogConfig::GetDefinitionPath()) return known;
  const TemporaryFolder folder;
  const std::string path = folder.add_file("where.yaml", source());
  load_definitions(path, "", qzlog_compiler::RenderingPaths::kIcu);
  loaded = qz_LOG_LogConfig::GetDefinitionPath();
  known = KnownDefinitions();
  known.add(read_errors_only(read_definition_file(path), {}).model);
  return known;
}

void require(bool condition) {
  if (!condition) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const KnownDefinitions& known = definitions();
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  const std::string expression(input.substr(0, input.find('\n')));
  qzlog_compiler::Findings findings("--where");
  std::optional<Where> where = Where::compile(expression, known, process_clock(kNow), findings);
  require(where.has_value() == findings.all().empty());
  for (const qzlog_compiler::Finding& finding : findings.all()) {
    require(finding.place.column >= 1 && finding.place.column <= expression.size() + 1 && !finding.text.empty());
  }
  if (!where || expression.size() == input.size()) return 0;
  const std::string_view lines = input.substr(expression.size() + 1);
  qz_LOG_EntryLine line;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(lines.data(), lines.size());
  while (reader.Next(line)) {
    const bool holds = !line.IsLoss() && where->holds(line);
    require(!holds || where->may_hold(RawLine({line.GetSource(), line.GetSourceLength()})));
  }
  return 0;
}
