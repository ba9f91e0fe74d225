#include "tests/ship/otlp/received_lines.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "ship/otlp/protobuf_wire.h"

namespace qzlog_test {

namespace {

using Json = nlohmann::json;
using qzlog_ship::WireField;
using qzlog_ship::WireReader;

std::string from_base64(const std::string& text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char letter : text) {
    if (letter == '=') break;
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    bits = bits << 6U | static_cast<std::uint32_t>(kDigits.find(letter));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

std::string bytes_of(const Json& value) {
  if (value.contains("stringValue")) return value["stringValue"];
  return from_base64(value.at("bytesValue"));
}

/// The fields of a message with this number.
std::vector<std::string_view> fields(std::string_view message, std::uint64_t number) {
  std::vector<std::string_view> found;
  WireReader reader(message);
  for (WireField field; reader.next(field);) {
    if (field.number == number) found.push_back(field.bytes);
  }
  EXPECT_FALSE(reader.is_damaged());
  return found;
}

}  // namespace

void add_lines_of_json(const std::string& body, Lines& lines) {
  const Json request = Json::parse(body);
  for (const Json& resource : request["resourceLogs"]) {
    for (const Json& record : resource["scopeLogs"][0]["logRecords"]) {
      std::map<std::string, std::string> own;
      for (const Json& each : record["attributes"]) {
        const std::string name = each["key"];
        if (name == "qzlog.entry" || name == "qzlog.identity") own[name] = bytes_of(each["value"]);
      }
      lines[own.at("qzlog.identity")] = own.at("qzlog.entry");
    }
  }
}

void add_lines_of_protobuf(const std::string& body, Lines& lines) {
  for (const std::string_view resource : fields(body, 1)) {
    for (const std::string_view scope : fields(resource, 2)) {
      for (const std::string_view record : fields(scope, 2)) {
        std::map<std::string, std::string> own;
        for (const std::string_view each : fields(record, 6)) {
          WireReader value(fields(each, 2).at(0));
          WireField field;
          EXPECT_TRUE(value.next(field));
          own[std::string(fields(each, 1).at(0))] = field.bytes;
        }
        lines[own.at("qzlog.identity")] = own.at("qzlog.entry");
      }
    }
  }
}

}  // namespace qzlog_test
