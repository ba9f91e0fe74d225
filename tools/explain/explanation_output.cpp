#include <nlohmann/json.hpp>
#include <ostream>
#include <string_view>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/explain/entry_explanation.h"
#include "tools/report/finding_json.h"
#include "tools/report/text_table.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

namespace {

using nlohmann::ordered_json;
using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::bits_text;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::hexadecimal;
using qzlog_compiler::sensitivity_name;
using qzlog_compiler::short_type_name;
using qzlog_compiler::TextRow;

/// Rows whose columns stand under each other, indented.
void print_rows(std::ostream& out, const std::vector<TextRow>& rows) {
  const auto row = [&rows](std::size_t i) {
    TextRow cells;
    for (const std::string& cell : rows[i]) cells.push_back(shown_value(cell));
    return cells;
  };
  if (rows.empty()) return;
  qzlog_compiler::write_text_table({TextRow(rows.front().size()), rows.size(), row, qzlog_compiler::kAnyWidth}, 2, 0,
                                   out);
}

void print_attributes(std::ostream& out, const char* title, const std::vector<AttributeDefinition>& attributes,
                      const std::string& selector) {
  if (attributes.empty()) return;
  out << '\n' << title << '\n';
  std::vector<TextRow> rows;
  for (const AttributeDefinition& attribute : attributes) {
    std::string remark = attribute.name == selector ? "selects the message" : "";
    if (!attribute.redirect.empty()) remark += (remark.empty() ? "redirect " : ", redirect ") + attribute.redirect;
    if (attribute.sensitivity != qzlog::Sensitivity::kKeep) {
      remark +=
          (remark.empty() ? "sensitive: " : ", sensitive: ") + std::string(sensitivity_name(attribute.sensitivity));
    }
    const std::string range = is_shown_in_gmt(attribute.type) ? "shown in GMT" : value_range(attribute.type);
    rows.push_back({attribute.name, std::string(short_type_name(attribute.type)), range, remark});
  }
  print_rows(out, rows);
}

std::string title_of(const ExplainedMessage& message, const EntryDefinition& entry) {
  std::string title = message.key.empty() ? "Message without a catalog key" : "Message " + shown_value(message.key);
  if (!message.index) return title;
  title += ", index " + std::to_string(*message.index);
  if (qzlog_compiler::selector_attribute(entry) == nullptr) return title;
  return title + ", for " + shown_value(entry.selector.attribute) + " = " + std::to_string(*message.value);
}

void print_message(std::ostream& out, const ExplainedMessage& message, const EntryDefinition& entry) {
  out << '\n' << title_of(message, entry) << '\n';
  std::vector<TextRow> rows;
  for (const ExplainedText& text : message.texts) {
    rows.push_back({text.language, text.text ? *text.text : "(no message: " + text.note + ")",
                    text.stale ? "(built from another text)" : ""});
  }
  print_rows(out, rows);
}

std::string files_of(const EntryExplanation& explanation) {
  if (!explanation.in_auxiliary) return "standard";
  return explanation.in_standard ? "standard, extended by the auxiliary file" : "auxiliary";
}

ordered_json attribute_json(const AttributeDefinition& attribute) {
  ordered_json item;
  item["name"] = attribute.name;
  item["type"] = short_type_name(attribute.type);
  if (const std::string range = value_range(attribute.type); !range.empty()) item["range"] = range;
  if (is_shown_in_gmt(attribute.type)) item["clock"] = "GMT";
  if (!attribute.redirect.empty()) item["redirect"] = attribute.redirect;
  if (attribute.sensitivity != qzlog::Sensitivity::kKeep) item["sensitive"] = sensitivity_name(attribute.sensitivity);
  return item;
}

ordered_json attributes_json(const std::vector<AttributeDefinition>& attributes) {
  ordered_json list = ordered_json::array();
  for (const AttributeDefinition& attribute : attributes) list.push_back(attribute_json(attribute));
  return list;
}

ordered_json message_json(const ExplainedMessage& message) {
  ordered_json item;
  item["key"] = message.key;
  if (message.index) item["index"] = *message.index;
  if (message.value) item["value"] = *message.value;
  item["texts"] = ordered_json::array();
  for (const ExplainedText& text : message.texts) {
    ordered_json shown = {{"language", text.language}};
    if (text.text) {
      shown["text"] = *text.text;
    } else {
      shown["failure"] = text.note;
    }
    if (text.stale) shown["stale"] = true;
    item["texts"].push_back(std::move(shown));
  }
  return item;
}

}  // namespace

void print_explanation(std::ostream& out, const EntryExplanation& explanation) {
  const EntryDefinition& entry = explanation.entry;
  out << entry.id << " ("
      << "0x" + hexadecimal(entry.id, 1) << ")" << (entry.name.empty() ? "" : " " + entry.name) << '\n';
  if (!entry.summary.empty()) out << shown_value(entry.summary) << '\n';
  out << '\n';
  print_rows(out, {{"version", explanation.version},
                   {"file", files_of(explanation)},
                   {"mask", bits_text(entry.mask)},
                   {"word", bits_text(entry.word)}});
  print_attributes(out, "Attributes", entry.attributes, entry.selector.attribute);
  print_attributes(out, "Global attributes in its messages", explanation.globals, "");
  if (explanation.shows_own_time) {
    out << "\nTime in its messages\n";
    print_rows(out, {{"TIMESTAMP", "the entry's own", "shown in the local time of whoever renders it"}});
  }
  for (const ExplainedMessage& message : explanation.messages) print_message(out, message, entry);
}

void print_explanation_json(std::ostream& out, const EntryExplanation& explanation) {
  const EntryDefinition& entry = explanation.entry;
  ordered_json item = json_result({});
  item["id"] = entry.id;
  item["hexadecimal"] = "0x" + hexadecimal(entry.id, 1);
  if (!entry.name.empty()) item["name"] = entry.name;
  if (!entry.summary.empty()) item["summary"] = entry.summary;
  item["version"] = explanation.version;
  item["files"] = ordered_json::array();
  if (explanation.in_standard) item["files"].push_back("standard");
  if (explanation.in_auxiliary) item["files"].push_back("auxiliary");
  item["mask"] = entry.mask;
  item["word"] = entry.word;
  item["attributes"] = attributes_json(entry.attributes);
  item["globals"] = attributes_json(explanation.globals);
  if (explanation.shows_own_time) item["timestamp_clock"] = "local";
  if (qzlog_compiler::selector_attribute(entry) != nullptr) item["selector"] = entry.selector.attribute;
  item["messages"] = ordered_json::array();
  for (const ExplainedMessage& message : explanation.messages) item["messages"].push_back(message_json(message));
  out << json_result_text(item);
}

}  // namespace qzlog_tool
