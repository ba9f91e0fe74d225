// What the transport to OTLP sends, and what it makes of answers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ship/otlp/json_form.h"
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

TEST_F(OtlpTransport, Levels_AreSeveritiesInTheSameOrder) {
  const HttpReceiver receiver(taken);
  std::vector<SentLine> lines = numbered(11);
  for (int level = -1; level < 10; ++level) lines[static_cast<std::size_t>(level + 1)].level = level;
  send(receiver, lines);
  const std::vector<Json> records = records_of(receiver.requests().at(1));
  std::string severities;
  for (const Json& record : records) {
    severities += record.contains("severityNumber")
                      ? record["severityNumber"].dump() + std::string(record["severityText"]) + ' '
                      : "none ";
  }
  EXPECT_EQ(severities, "none 5debug 6debug 9info 10info 11notice 13warning 14warning 17error 18critical 19alert ");
  EXPECT_EQ(attribute(records.at(0), "qzlog.level"), nullptr);
}

TEST_F(OtlpTransport, IdentitiesOfTraces_AreFromTheAttributesThatAreNamed) {
  const HttpReceiver receiver(taken);
  options_.options.emplace_back("trace-attribute", "T");
  options_.options.emplace_back("span-attribute", "S");
  const std::string trace = "0AF7651916cd43dd8448eb211c80319c";
  const auto line = [](const std::string& attributes) { return "{\"attributes\":" + attributes + "}"; };
  send(receiver, {{"1", line(R"({"T":")" + trace + R"(","S":"b7ad6b7169203331"})")},
                  {"2", line("{}")},
                  {"3", line(R"({"T":"00000000000000000000000000000000","S":"b7ad6b716920333"})")},
                  {"4", line(R"({"T":5,"S":"b7ad6b716920333g"})")}});
  const std::vector<Json> records = records_of(receiver.requests().at(1));
  EXPECT_EQ(records[0]["traceId"], "0af7651916cd43dd8448eb211c80319c");
  EXPECT_EQ(records[0]["spanId"], "b7ad6b7169203331");
  EXPECT_EQ(attribute(records[0], "T")["stringValue"], trace);
  for (const std::size_t index : {1U, 2U, 3U}) {
    EXPECT_FALSE(records[index].contains("traceId"));
    EXPECT_FALSE(records[index].contains("spanId"));
  }
  EXPECT_EQ(warnings_,
            (std::vector<std::string>{
                "some entries have no 32 hexadecimal digits in 'T', or zeros alone: they are sent without, the "
                "attribute as it is",
                "some entries have no 16 hexadecimal digits in 'S', or zeros alone: they are sent without, the "
                "attribute as it is"}));
}

TEST_F(OtlpTransport, NamesThatStandTwiceOrAreOurs_AreLeftOut) {
  const HttpReceiver receiver(taken);
  options_.options.emplace_back("event-name-attribute", "yes");
  std::string attributes = R"("qzlog.entry":"x","event.name":"x","A":1,"A":2)";
  for (int number = 0; number < 40; ++number) attributes += ",\"N" + std::to_string(number % 30) + "\":1";
  send(receiver, {{"1", "{\"attributes\":{" + attributes + "}}"}});
  const Json record = records_of(receiver.requests().at(1)).at(0);
  std::set<std::string> names;
  for (const Json& each : record["attributes"]) EXPECT_TRUE(names.insert(each["key"]).second) << each;
  EXPECT_EQ(names.size(), 1U + 30U + 5U);
  EXPECT_EQ(attribute(record, "A")["intValue"], "1");
  EXPECT_EQ(attribute(record, "event.name")["stringValue"], "DISK_FULL");
}

TEST_F(OtlpTransport, LinesOfSeveralHosts_HaveResourcesOfTheirOwn) {
  const HttpReceiver receiver(taken);
  std::vector<SentLine> lines = numbered(4);
  lines[2].writer = "";
  lines[3].writer = "";
  lines[3].product = "";
  send(receiver, lines);
  const Json resources = Json::parse(receiver.requests().at(1).body)["resourceLogs"];
  ASSERT_EQ(resources.size(), 3U);
  EXPECT_EQ(resources[0]["resource"]["attributes"][1]["value"]["stringValue"], "web1");
  EXPECT_EQ(resources[0]["scopeLogs"][0]["logRecords"].size(), 2U);
  EXPECT_EQ(resources[1]["resource"]["attributes"][1]["value"]["stringValue"], "thishost");
  EXPECT_EQ(resources[2]["resource"]["attributes"].size(), 1U);
}

TEST_F(OtlpTransport, RequestBytes_BoundRequests) {
  const HttpReceiver receiver(taken);
  options_.options.emplace_back("request-bytes", "2000");
  send(receiver, numbered(50));
  EXPECT_EQ(fates_, Fates(50, QZLOG_ACKNOWLEDGED));
  std::size_t count = 0;
  for (const HttpRequest& request : receiver.requests()) {
    EXPECT_LE(request.body.size(), 2300U);
    EXPECT_EQ(request.connection, 1);
    count += records_of(request).size();
  }
  EXPECT_EQ(count, 50U);
  EXPECT_GT(receiver.requests().size(), 5U);
}

TEST(JsonForm, NumbersWithoutDigits_AreTexts) {
  qzlog_ship::LogRecord record;
  record.observed_nanoseconds = 1;
  const double infinity = std::numeric_limits<double>::infinity();
  record.attributes = {{"a", std::nan("")}, {"b", infinity}, {"c", -infinity}, {"d", -0.0}, {"e", 1e300}};
  std::string run;
  qzlog_ship::JsonForm().append_record(record, run);
  EXPECT_EQ(run, R"({"observedTimeUnixNano":"1","attributes":[{"key":"a","value":{"doubleValue":"NaN"}},)"
                 R"({"key":"b","value":{"doubleValue":"Infinity"}},{"key":"c","value":{"doubleValue":"-Infinity"}},)"
                 R"({"key":"d","value":{"doubleValue":-0}},{"key":"e","value":{"doubleValue":1e+300}}]},)");
}

TEST_F(OtlpTransport, OptionsAndUrlsThatAreNone_AreErrors) {
  const std::pair<const char*, const char*> options[] = {
      {"encoding=xml", "--option encoding takes protobuf or json"},
      {"compression=zip", "--option compression takes none or gzip"},
      {"partial-success=no", "--option partial-success takes find or accept"},
      {"request-bytes=3", "--option request-bytes takes a number from 1024 to 1073741824"},
      {"body=1", "--option body takes yes or no"}};
  for (const auto& [option, text] : options) {
    const std::string word = option;
    const std::size_t equal = word.find('=');
    options_.options = {{word.substr(0, equal), word.substr(equal + 1)}};
    send("otlp+http://127.0.0.1:1", numbered(1));
    EXPECT_EQ(outcome_, QZLOG_NEVER);
    EXPECT_EQ(reason_, text);
  }
  options_.options.clear();
  options_.ca_file = "any.pem";
  send("otlp+http://127.0.0.1:1", numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_, "--ca is for otlp+https://; otlp+http:// is not encrypted");
  options_.ca_file.clear();
  const std::pair<const char*, const char*> urls[] = {
      {"otlp://h:1/v1/logs", "OTLP goes over HTTP: the URL begins with otlp+http:// or otlp+https://"},
      {"otlp+http://a:1,b:2", "the URL names more than one host"}};
  for (const auto& [url, text] : urls) {
    send(url, numbered(1));
    EXPECT_EQ(outcome_, QZLOG_NEVER);
    EXPECT_EQ(reason_, text);
  }
}

}  // namespace
}  // namespace qzlog_test
