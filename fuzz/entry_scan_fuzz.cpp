// Reads the first byte of the input as a choice of two attributes, and what is behind it as lines of entries: what is
// said of a line by its bytes alone has to be what the library reads of it.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/entry_lines.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"
#include "tools/definitions/definitions.h"
#include "tools/stats/entry_scan.h"
#include "tools/system/memory_file.h"

using qzlog_tool::EntryScan;
using qzlog_tool::ScannedEntry;
using qzlog_tool::ScannedValue;

namespace {

/// Attributes of each type; some have another type in another entry, where one is defined twice.
std::string source() {
  std::string text =
      "version: \"1.0\"\n"
      "globals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}, {name: Pool, "
      "type: Char32}]\n"
      "entries:\n"
      "  - {id: 2, name: SECOND, message: x, attributes: [{name: A, type: Char64}, {name: Free, type: UInt4}]}\n"
      "  - id: 1\n    name: FIRST\n    message: x\n    attributes: [{name: A, type: Float}, {name: Free, type: UInt2}";
  for (const qz_AttributeTypeName* type = AttributeTypeList; type->name != nullptr; ++type) {
    text += std::string(", {name: ") + type->name + ", type: " + type->name + "}";
  }
  return text + "]\n";
}

void require(bool condition) {
  if (!condition) __builtin_trap();
}

std::vector<std::string> attribute_names() {
  std::vector<std::string> names = {"", "A", "Free", "Pool", "TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE", "None"};
  for (const qz_AttributeTypeName* type = AttributeTypeList; type->name != nullptr; ++type)
    names.emplace_back(type->name);
  return names;
}

/// The definitions, which the library has too; again where it has others.
const qzlog_compiler::DefinitionModel& model() {
  static std::optional<qzlog_compiler::DefinitionModel> model;
  static std::optional<qzlog_tool::MemoryFile> file;
  if (model && file->path() == qz_LOG_LogConfig::GetDefinitionPath()) return *model;
  auto definitions = qzlog_tool::read_definitions({"s.yaml", "s.yaml", source(), true}, {.surprises = false});
  file.emplace(definitions.bytes);
  qz_LOG_LogConfig::SetDefinitionPath(file->path().c_str());
  model = std::move(definitions.model);
  return *model;
}

/// Compares what an entry has of an attribute with what was scanned.
class Comparison : public qz_LOG_AttributeVisitor {
 public:
  Comparison(std::string_view wanted, const ScannedValue& scanned) : wanted_(wanted), scanned_(scanned) {}

  void check(const qz_LOG_LogEntry& entry) {
    entry.VisitAttributes(*this);
    require(is_seen_ == (scanned_.kind != ScannedValue::Kind::kAbsent));
  }

  void VisitBool(const char* name, qz_AttributeType /*type*/, bool value) override {
    if (sees(name)) require(scanned_.kind == ScannedValue::Kind::kBool && scanned_.truth == value);
  }
  void VisitUnsigned(const char* name, qz_AttributeType /*type*/, unsigned int value) override {
    if (sees(name)) require(is_integer(false) && scanned_.integer == value);
  }
  void VisitSigned(const char* name, qz_AttributeType /*type*/, int value) override {
    if (sees(name)) require(is_integer(false) && scanned_.integer == value);
  }
  void VisitFloat(const char* name, qz_AttributeType /*type*/, double value) override {
    if (sees(name)) require(is_integer(true) && static_cast<double>(scanned_.integer) == value);
  }
  void VisitText(const char* name, qz_AttributeType /*type*/, const char* text, unsigned int length) override {
    if (sees(name))
      require(scanned_.kind == ScannedValue::Kind::kText && scanned_.text == std::string_view(text, length));
  }
  void VisitTime(const char* name, qz_AttributeType /*type*/, const qz_Time& /*value*/) override {
    require(!sees(name));
  }

 private:
  bool sees(const char* name) {
    if (wanted_ != name) return false;
    is_seen_ = true;
    return true;
  }
  bool is_integer(bool is_float) const {
    return scanned_.kind == ScannedValue::Kind::kInteger && scanned_.is_float == is_float;
  }

  std::string_view wanted_;
  const ScannedValue& scanned_;
  bool is_seen_ = false;
};

void compare(const std::string& text, const ScannedEntry& scanned, const std::vector<std::string>& wanted) {
  static qz_LOG_EntryLine line;
  const std::string with_end = text + '\n';
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(with_end.data(), with_end.size());
  require(reader.Next(line) && !line.IsLoss() && !line.IsHeld());
  const qz_LOG_LogEntry& entry = line.GetEntry();
  require(scanned.id == entry.GetEntryID() && scanned.level == entry.GetLogLevel());
  require(scanned.has_time == line.HasTime() && scanned.writer == line.GetWriter());
  require(!scanned.has_time || scanned.moment == entry.GetTimestamp(true).unix_seconds());
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    if (!wanted[index].empty()) Comparison(wanted[index], scanned.values[index]).check(entry);
  }
  require(!reader.Next(line));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const std::vector<std::string> names = attribute_names();
  if (size == 0) return 0;
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  const std::vector<std::string> wanted = {names[bytes[0] % names.size()], names[(bytes[0] + 1U) % names.size()]};
  EntryScan scan(wanted);
  scan.add(model());
  std::string_view rest(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  ScannedEntry entry;
  while (!rest.empty()) {
    const std::string text(rest.substr(0, rest.find('\n')));
    if (scan.scan(text, entry)) compare(text, entry, wanted);
    rest.remove_prefix(std::min(rest.size(), text.size() + 1));
  }
  return 0;
}
