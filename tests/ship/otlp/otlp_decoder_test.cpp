// Requests as OpenTelemetry's own package for node decodes and makes them: @opentelemetry/otlp-transformer 0.208.0,
// which still brings its messages along as protobuf.js has them, in the folder QZLOG_NODE_MODULES, or
// build/node/node_modules. Without it these tests are skipped.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/ship/otlp/hostile_lines.h"
#include "tests/support/rounds.h"

namespace qzlog_test {
namespace {

using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;

class OtlpDecoder : public OtlpFixture {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(modules() + "/@opentelemetry/otlp-transformer/build/src/generated/root.js") ||
        !std::filesystem::exists(modules() + "/@opentelemetry/resources") ||
        std::system("command -v node > /dev/null") != 0) {
      GTEST_SKIP() << "no node, or not its packages in " << modules();
    }
  }

  static std::string modules() {
    const char* const folder = std::getenv("QZLOG_NODE_MODULES");
    return folder != nullptr ? folder : QZLOG_USUAL_NODE_MODULES;
  }
  /// The request of both forms, as files with this number.
  void write_requests(int number, const std::vector<SentLine>& lines) {
    const HttpReceiver receiver([](const HttpRequest&) {
      HttpReply reply;
      reply.body = "";
      return reply;
    });
    for (const char* const form : {"json", "protobuf"}) {
      options_.options = {
          {"encoding", form}, {"trace-attribute", "Trace"}, {"span-attribute", "Span"}, {"request-bytes", "100000000"}};
      send(receiver, lines);
      ASSERT_EQ(fates_, std::vector<std::int32_t>(lines.size(), QZLOG_ACKNOWLEDGED)) << reason_;
    }
    ASSERT_EQ(receiver.requests().size(), 4U);
    folder_.write(std::to_string(number) + ".json", receiver.requests()[1].body);
    folder_.write(std::to_string(number) + ".pb", receiver.requests()[3].body);
  }
  /// What the script says.
  std::string check() const {
    const std::string command = "NODE_PATH='" + modules() + "' node '" QZLOG_CHECK_REQUESTS "' '" + folder_.path() +
                                "' > '" + folder_.path("said") + "' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return folder_.read("said");
  }

  qz_test::SeededRandom random_;
};

TEST_F(OtlpDecoder, HostileLines_AreAcceptedAndTheSameInBothForms) {
  HostileLines hostile(random_);
  const int count = qz_test::rounds(40);
  for (int number = 0; number < count; ++number) {
    std::vector<SentLine> lines;
    for (int index = 0; index < 500; ++index) lines.push_back(hostile.next());
    write_requests(number, lines);
  }
  EXPECT_EQ(check(), std::to_string(count * 500) + " records, 0 compared with the exporter's\n");
}

/// A line, and what the exporter is given for it. The package knows no integers beyond 53 bits, and takes a double
/// without fraction for one.
nlohmann::ordered_json reference(int number, SentLine& sent) {
  static constexpr int kNumbers[] = {5, 6, 9, 10, 11, 13, 14, 17, 18, 19};
  static constexpr const char* kWords[] = {"debug",   "debug",   "info",  "info",     "notice",
                                           "warning", "warning", "error", "critical", "alert"};
  const int level = number % 10;
  sent.level = level;
  const nlohmann::ordered_json own = {{"Name", "vol\n\"" + std::to_string(number) + "\" é😀"},
                                      {"Free", number * 1000003 - 7},
                                      {"Ratio", number + 0.25},
                                      {"Full", number % 2 == 0},
                                      {"Trace", "0af7651916cd43dd8448eb211c80319c"},
                                      {"Span", "b7ad6b7169203331"},
                                      {"Empty", ""}};
  sent.line = nlohmann::ordered_json(
                  {{"id", 1001}, {"level", level}, {"time", "2026-11-21T08:15:30.000000007Z"}, {"attributes", own}})
                  .dump();
  nlohmann::ordered_json attributes = own;
  attributes["qzlog.id"] = 1001;
  attributes["qzlog.level"] = level;
  attributes["qzlog.identity"] = sent.identity;
  attributes["qzlog.entry"] = sent.line;
  nlohmann::ordered_json line = {{"request", 0},
                                 {"nanoseconds", "1795248930000000007"},
                                 {"severityNumber", kNumbers[level]},
                                 {"severityText", kWords[level]},
                                 {"eventName", sent.event},
                                 {"body", "The disk \"é\" is full"},
                                 {"traceId", own["Trace"]},
                                 {"spanId", own["Span"]},
                                 {"scope", {{"name", "qzlog"}, {"version", "1.0.0"}}},
                                 {"resource", {{"service.name", "storage"}, {"host.name", "web1"}}},
                                 {"attributes", attributes}};
  return line;
}

TEST_F(OtlpDecoder, Values_AreWrittenAsTheExporterWritesThem) {
  body() = "The disk \"é\" is full";
  std::vector<SentLine> lines = numbered(50);
  std::string references;
  for (int number = 0; number < 50; ++number) {
    references += reference(number, lines[static_cast<std::size_t>(number)]).dump() + '\n';
  }
  folder_.write("reference.jsonl", references);
  write_requests(0, lines);
  EXPECT_EQ(check(), "50 records, 50 compared with the exporter's\n");
}

}  // namespace
}  // namespace qzlog_test
