#include "tools/report/finding_json.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace qzlog_tool {
namespace {

using nlohmann::ordered_json;
using qzlog_compiler::Finding;
using qzlog_compiler::FindingNote;
using qzlog_compiler::TextPlace;

std::string dumped(const ordered_json& json, int indent) {
  return json.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

void add_place(TextPlace place, ordered_json& json) {
  if (!place.known()) return;
  json["line"] = place.line;
  if (place.column != 0) json["column"] = place.column;
}

ordered_json note_json(const FindingNote& note) {
  ordered_json json;
  json["file"] = note.file;
  add_place(note.place, json);
  json["text"] = note.text;
  return json;
}

}  // namespace

ordered_json to_json(const Finding& finding) {
  ordered_json json;
  json["file"] = finding.file;
  add_place(finding.place, json);
  if (finding.offset) json["offset"] = *finding.offset;
  if (finding.entry_id) json["entry"] = *finding.entry_id;
  if (!finding.entry_name.empty()) json["entry_name"] = finding.entry_name;
  if (!finding.subject.empty()) json["subject"] = finding.subject;
  json["severity"] = severity_name(finding.severity);
  json["rule"] = finding.rule.name();
  json["text"] = finding.text;
  for (const FindingNote& note : finding.notes) json["notes"].push_back(note_json(note));
  if (!finding.hint.empty()) json["hint"] = finding.hint;
  return json;
}

ordered_json json_result(std::span<const Finding> findings) {
  ordered_json list = ordered_json::array();
  for (const Finding& finding : findings) list.push_back(to_json(finding));
  ordered_json result;
  result["qzlog"] = kJsonResultVersion;
  result["findings"] = std::move(list);
  return result;
}

std::string json_result_text(const ordered_json& result) { return dumped(result, 2) + '\n'; }

void add_json_beginning(std::span<const Finding> findings, qzlog_compiler::JsonObjectStream& json) {
  json.number("qzlog", kJsonResultVersion);
  qzlog_compiler::JsonListStream list(json.member("findings"), qzlog_compiler::kResultListLayout);
  for (const Finding& finding : findings) list.item() << dumped(to_json(finding), -1);
  list.end();
}

}  // namespace qzlog_tool
