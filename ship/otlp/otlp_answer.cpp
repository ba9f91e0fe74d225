#include "ship/otlp/otlp_answer.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>

#include "ship/otlp/protobuf_wire.h"
#include "ship/otlp/utf8_check.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kMostMessageBytes = 300;

/// One line that can stand in a text of ours.
std::string shown(std::string_view text) {
  std::string line(text.substr(0, kMostMessageBytes));
  while (!line.empty() && !is_utf8(line) && text.size() > line.size()) line.pop_back();
  if (!is_utf8(line)) return "(not UTF-8)";
  std::replace_if(
      line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  while (line.ends_with(' ') || line.ends_with('.')) line.pop_back();
  return line;
}

/// int64 is a text in the JSON of protobuf, and readers have to take numbers too.
std::optional<std::int64_t> integer_of(const Json& value) {
  if (value.is_number_integer()) return value.get<std::int64_t>();
  if (!value.is_string()) return std::nullopt;
  const auto& text = value.get_ref<const std::string&>();
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || stopped != end) return std::nullopt;
  return number;
}

std::string text_member(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::optional<ExportAnswer> parse_json(const std::string& body) {
  const Json json = Json::parse(body, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  ExportAnswer answer;
  const auto partial = json.find("partialSuccess");
  if (partial == json.end() || partial->is_null()) return answer;
  if (!partial->is_object()) return std::nullopt;
  const auto rejected = partial->find("rejectedLogRecords");
  if (rejected != partial->end() && !rejected->is_null()) {
    const std::optional<std::int64_t> number = integer_of(*rejected);
    if (!number) return std::nullopt;
    answer.rejected = *number;
  }
  answer.message = shown(text_member(*partial, "errorMessage"));
  return answer;
}

bool parse_partial_success(std::string_view bytes, ExportAnswer& answer) {
  WireReader reader(bytes);
  for (WireField field; reader.next(field);) {
    if (field.number == 1 && field.type == WireType::kVarint)
      answer.rejected = static_cast<std::int64_t>(field.integer);
    if (field.number == 2 && field.type == WireType::kBytes) answer.message = shown(field.bytes);
  }
  return !reader.is_damaged();
}

std::optional<ExportAnswer> parse_protobuf(std::string_view body) {
  ExportAnswer answer;
  WireReader reader(body);
  for (WireField field; reader.next(field);) {
    if (field.number != 1 || field.type != WireType::kBytes) continue;
    if (!parse_partial_success(field.bytes, answer)) return std::nullopt;
  }
  if (reader.is_damaged()) return std::nullopt;
  return answer;
}

constexpr const char* kJson = "application/json";
constexpr const char* kProtobuf = "application/x-protobuf";

std::optional<std::string> status_message(const HttpAnswer& answer) {
  if (answer.content_type == kJson) {
    const Json json = Json::parse(answer.body, nullptr, false);
    if (json.is_object()) return text_member(json, "message");
  }
  if (answer.content_type == kProtobuf) {
    WireReader reader(answer.body);
    for (WireField field; reader.next(field);) {
      if (field.number == 2 && field.type == WireType::kBytes) return std::string(field.bytes);
    }
  }
  if (answer.content_type == "text/plain") return answer.body;
  return std::nullopt;
}

}  // namespace

ExportAnswer parse_export_answer(const HttpAnswer& answer) {
  if (answer.is_cut) fail_for_now("the answer is far too long: the receiver speaks no OTLP there");
  if (answer.body.empty()) return {};
  std::optional<ExportAnswer> parsed;
  if (answer.content_type == kJson) parsed = parse_json(answer.body);
  if (answer.content_type == kProtobuf) parsed = parse_protobuf(answer.body);
  if (!parsed) {
    fail_for_now("the answer is none of OTLP's (Content-Type '" + shown(answer.content_type) +
                 "'): is it a receiver of OTLP logs, and not a proxy on the way?");
  }
  parsed->rejected = std::max<std::int64_t>(parsed->rejected, 0);
  return *parsed;
}

std::string message_of(const HttpAnswer& answer) { return shown(status_message(answer).value_or("")); }

}  // namespace qzlog_ship
