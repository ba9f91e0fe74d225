// Lines come back equal out of the attribute qzlog.entry, in both forms of requests.
#include <gtest/gtest.h>

#include <zlib.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ship/otlp/protobuf_wire.h"
#include "tests/ship/otlp/hostile_lines.h"
#include "tests/support/rounds.h"

namespace qzlog_test {
namespace {

using Json = nlohmann::json;
using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;
using qzlog_ship::WireField;
using qzlog_ship::WireReader;
using Lines = std::map<std::string, std::string>;  // by identity

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

std::string unzipped(const std::string& bytes) {
  std::string text(64U << 20U, '\0');
  z_stream stream = {};
  EXPECT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return text;
}

class OtlpLines : public OtlpFixture {
 protected:
  using Adder = void (*)(const std::string& body, Lines& lines);

  void expect_equal_lines(int count, Adder add_lines, bool is_compressed = false) {
    const HttpReceiver receiver([](const HttpRequest&) {
      HttpReply reply;
      reply.content_type = "";
      reply.body = "";
      return reply;
    });
    HostileLines hostile(random_);
    Lines written;
    for (int sent = 0; sent < count; sent += 500) {
      std::vector<SentLine> lines;
      for (int index = 0; index < 500; ++index) lines.push_back(hostile.next());
      for (const SentLine& line : lines) written[line.identity] = line.line;
      send(receiver, lines);
      EXPECT_EQ(fates_, std::vector<std::int32_t>(500, QZLOG_ACKNOWLEDGED)) << reason_;
    }
    Lines received;
    for (const HttpRequest& request : receiver.requests()) {
      add_lines(is_compressed ? unzipped(request.body) : request.body, received);
    }
    EXPECT_EQ(received.size(), written.size());
    EXPECT_TRUE(received == written);
  }

  qz_test::SeededRandom random_;
};

TEST_F(OtlpLines, HostileOnes_ComeBackEqualOutOfJson) { expect_equal_lines(qz_test::rounds(20000), add_lines_of_json); }

TEST_F(OtlpLines, HostileOnes_ComeBackEqualOutOfProtobuf) {
  options_.options.clear();
  expect_equal_lines(qz_test::rounds(20000), add_lines_of_protobuf);
}

TEST_F(OtlpLines, HostileOnes_ComeBackEqualCompressed) {
  options_.options = {{"compression", "gzip"}, {"request-bytes", "20000"}};
  expect_equal_lines(500, add_lines_of_protobuf, true);
}

}  // namespace
}  // namespace qzlog_test
