#include "tools/inspect/model_yaml.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/source/compiler.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/inspect/entry_names.h"
#include "tools/inspect/yaml_text.h"

namespace qzlog_compiler {
namespace {

class YamlWriter {
 public:
  YamlWriter(const DefinitionModel& model, std::vector<YamlObstacle>& obstacles)
      : model_(model), obstacles_(obstacles) {}

  std::string write() {
    write_line("version: " + text(model_.version, "the version"));
    write_attributes("", "globals", "global attribute", model_.globals);
    const std::vector<std::string> names = make_entry_names(model_);
    write_line(names.empty() ? "entries: []" : "entries:");
    for (std::size_t i = 0; i < names.size(); ++i) {
      entry_lines_.push_back(lines_ + 1);
      entry_ = i;
      write_entry(model_.entries[i], names[i]);
    }
    return std::move(out_);
  }

  /// The entry that a line of the source belongs to.
  std::optional<std::size_t> entry_at(std::size_t line) const {
    const auto next = std::upper_bound(entry_lines_.begin(), entry_lines_.end(), line);
    if (next == entry_lines_.begin()) return std::nullopt;
    return static_cast<std::size_t>(next - entry_lines_.begin()) - 1;
  }

 private:
  void write_line(const std::string& line) {
    out_.append(line).append("\n");
    ++lines_;
  }

  std::string text(const std::string& bytes, const char* what) {
    if (is_utf8(bytes)) return yaml_quoted(bytes);
    obstacles_.push_back({entry_, std::string(what) + " " + quoted(bytes) + " is not UTF-8"});
    return "\"\"";
  }

  std::string type(const AttributeDefinition& attribute) {
    std::string name(short_type_name(attribute.type));
    if (!find_attribute_type(name)) {
      obstacles_.push_back({entry_, "the attribute " + quoted(attribute.name) + " has the type code " +
                                        std::to_string(static_cast<unsigned>(attribute.type)) + ", which has no name"});
    }
    return name;
  }

  /// A list that the format holds and its readers do not, however many millions the file says there are.
  bool fits(std::size_t count, const std::string& what) {
    if (count <= kMaximumCount) return true;
    obstacles_.push_back({entry_, std::to_string(count) + " " + what + " are too many"});
    return false;
  }

  void write_attributes(const std::string& indent, const std::string& key, const char* what,
                        const std::vector<AttributeDefinition>& attributes) {
    if (attributes.empty() || !fits(attributes.size(), what + std::string("s"))) return;
    write_line(indent + key + ":");
    for (const AttributeDefinition& attribute : attributes) {
      std::string line = indent + "  - {name: " + text(attribute.name, what) + ", type: " + type(attribute);
      if (!attribute.redirect.empty()) line += ", redirect: " + text(attribute.redirect, "the redirection name");
      if (attribute.sensitivity != qzlog::Sensitivity::kKeep) {
        line += ", sensitive: " + std::string(sensitivity_name(attribute.sensitivity));
      }
      write_line(line + "}");
    }
  }

  /// Mask and word are written even where they are the defaults: those of an entry that extends another are not.
  void write_entry(const EntryDefinition& entry, const std::string& name) {
    write_line("  - id: " + std::to_string(entry.id));
    write_line("    name: " + name);
    if (!entry.summary.empty()) write_line("    summary: " + text(entry.summary, "the summary"));
    write_line("    mask: " + bits_text(entry.mask));
    write_line("    word: " + std::to_string(entry.word));
    write_line("    raw: " + text(entry.message.stored, "the message"));
    if (entry.message_id != name) write_line("    message_id: " + text(entry.message_id, "the message ID"));
    write_attributes("    ", "attributes", "attribute", entry.attributes);
    write_selector(entry.selector);
  }

  void write_selector(const Selector& selector) {
    if (selector.attribute.empty() && selector.messages.empty()) return;
    write_line("    selector:");
    if (!selector.attribute.empty()) {
      write_line("      attribute: " + text(selector.attribute, "the selector attribute"));
    }
    if (!fits(selector.messages.size(), "selector messages")) return;
    write_line(selector.messages.empty() ? "      messages: []" : "      messages:");
    for (const SelectorMessage& message : selector.messages) {
      write_line("        - {index: " + std::to_string(message.index) + ", value: " + std::to_string(message.value) +
                 ", id: " + text(message.id, "the message ID") +
                 ", raw: " + text(message.message.stored, "the message") + "}");
    }
  }

  const DefinitionModel& model_;
  std::vector<YamlObstacle>& obstacles_;
  std::optional<std::size_t> entry_;
  std::vector<std::size_t> entry_lines_;
  std::string out_;
  std::size_t lines_ = 0;
};

/// The lines that a diagnostic names are those of a source that nobody sees.
std::string without_line(std::string text) {
  text.erase(std::min(text.find(", in line "), text.size()));
  return text;
}

}  // namespace

ModelYaml write_yaml(const DefinitionModel& model, const DefinitionModel* standard) {
  ModelYaml result;
  YamlWriter writer(model, result.obstacles);
  result.source = writer.write();
  if (result.obstacles.empty()) {
    CompileOptions options;
    options.standard = standard;
    // Templates that the narrow path fails at are records, too: for this path the source compiles.
    options.path = RenderingPaths::kIcu;
    for (const Finding& found : compile_source(result.source, "", options).diagnostics) {
      if (found.severity != Severity::kError) continue;
      result.obstacles.push_back({writer.entry_at(found.place.line), without_line(found.text)});
    }
  }
  if (!result.obstacles.empty()) result.source.clear();
  return result;
}

}  // namespace qzlog_compiler
