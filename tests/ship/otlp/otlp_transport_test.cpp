// What the transport to OTLP sends, and what it makes of answers.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/ship/otlp/otlp_fixture.h"

namespace qzlog_test {
namespace {

using Json = nlohmann::json;
using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;
using Fates = std::vector<std::int32_t>;

HttpReply taken(const HttpRequest& /*request*/) { return {}; }

std::vector<Json> records_of(const HttpRequest& request) {
  std::vector<Json> records;
  const Json parsed = Json::parse(request.body);
  for (const Json& resource : parsed["resourceLogs"]) {
    for (const Json& record : resource["scopeLogs"][0]["logRecords"]) records.push_back(record);
  }
  return records;
}

Json attribute(const Json& record, const std::string& name) {
  for (const Json& each : record["attributes"]) {
    if (each["key"] == name) return each["value"];
  }
  return nullptr;
}

class OtlpTransport : public OtlpFixture {};

TEST_F(OtlpTransport, Line_IsARecordWithTypedAttributesAndTheLine) {
  const HttpReceiver receiver(taken);
  const std::string line =
      R"({"id":1001,"level":7,"time":"2026-11-21T08:15:30Z","attributes":)"
      R"({"Name":"vol\"1","Free":-9223372036854775808,"Ratio":0.5,"Full":true,"Big":18446744073709551615}})";
  send(receiver, {{"web1/7/1/1", line, 7}});
  EXPECT_EQ(reason_, "");
  EXPECT_EQ(fates_, Fates{QZLOG_ACKNOWLEDGED});
  ASSERT_EQ(receiver.requests().size(), 2U);
  EXPECT_EQ(receiver.requests()[0].body, R"({"resourceLogs":[]})");
  const HttpRequest request = receiver.requests()[1];
  EXPECT_EQ(request.head, "POST /v1/logs HTTP/1.1");
  EXPECT_EQ(request.headers.at("content-type"), "application/json");
  EXPECT_EQ(request.connection, 1);
  const Json resource = Json::parse(request.body)["resourceLogs"][0];
  EXPECT_EQ(resource["resource"], Json::parse(R"({"attributes":[
    {"key":"service.name","value":{"stringValue":"storage"}},{"key":"host.name","value":{"stringValue":"web1"}}]})"));
  EXPECT_EQ(resource["scopeLogs"][0]["scope"], Json::parse(R"({"name":"qzlog","version":"1.0.0"})"));
  const Json record = records_of(request).at(0);
  EXPECT_EQ(record["timeUnixNano"], "1795248930000000000");
  EXPECT_EQ(record["severityNumber"], 17);
  EXPECT_EQ(record["severityText"], "error");
  EXPECT_EQ(record["eventName"], "DISK_FULL");
  EXPECT_FALSE(record.contains("body"));
  EXPECT_EQ(attribute(record, "Name"), Json::parse(R"({"stringValue":"vol\"1"})"));
  EXPECT_EQ(attribute(record, "Free"), Json::parse(R"({"intValue":"-9223372036854775808"})"));
  EXPECT_EQ(attribute(record, "Ratio"), Json::parse(R"({"doubleValue":0.5})"));
  EXPECT_EQ(attribute(record, "Full"), Json::parse(R"({"boolValue":true})"));
  EXPECT_EQ(attribute(record, "Big"), Json::parse(R"({"doubleValue":18446744073709551615})"));
  EXPECT_EQ(attribute(record, "qzlog.id")["intValue"], "1001");
  EXPECT_EQ(attribute(record, "qzlog.level")["intValue"], "7");
  EXPECT_EQ(attribute(record, "qzlog.identity")["stringValue"], "web1/7/1/1");
  EXPECT_EQ(attribute(record, "qzlog.entry")["stringValue"], line);
}

}  // namespace
}  // namespace qzlog_test
