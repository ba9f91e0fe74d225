#include "tools/ship/record_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "qzlog/logcfg.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/loaded_definitions.h"

namespace qzlog_tool {
namespace {

constexpr const char* kSource = R"(version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - {id: 7, name: FULL, message: "{Name} is full", attributes: [{name: Name, type: Char32}, {name: Share, type: Float}, {name: Since, type: Timestamp}]}
)";

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }
std::string string_of(const qzlog_text& text) { return {text.bytes, text.size}; }

class RecordHostTest : public ::testing::Test {
 protected:
  RecordHostTest() {
    load_definitions(folder_.write("d.yaml", kSource), "", qzlog_compiler::RenderingPaths::kIcu,
                     [this](const qzlog_compiler::DefinitionModel& model) { known_.add(model); });
    messages_.emplace(nullptr);
    host_.emplace(
        known_, &*messages_, [this](const std::string& text) { warnings_ += text + '\n'; },
        [this] { return is_ending_; });
  }
  ~RecordHostTest() override { qz_LOG_LogConfig::ClearDefinitions(); }

  static qzlog_record record_of(std::string_view line) {
    qzlog_record record = {};
    record.line = text_of(line);
    record.id = 7;
    return record;
  }
  const qzlog_host& host() const { return host_->host(); }
  std::string body(const qzlog_record& record) const {
    qzlog_text body = {};
    return host().body(host().context, &record, &body) != 0 ? string_of(body) : "none";
  }

  qz_test::TempDir folder_;
  KnownDefinitions known_;
  std::optional<RecordMessages> messages_;
  std::optional<RecordHost> host_;
  std::string warnings_;
  bool is_ending_ = false;
};

TEST_F(RecordHostTest, Attributes_HaveTheTypesOfTheDefinitions) {
  const qzlog_record record =
      record_of(R"({"id":7,"attributes":{"Name":"v","Share":1,"Since":"2026-11-21T08:15:30Z","Other":1}})");
  std::size_t count = 0;
  const qzlog_attribute* const all = host().attributes(host().context, &record, &count);
  ASSERT_EQ(count, 4U);
  EXPECT_EQ(string_of(all[0].name), "Name");
  EXPECT_EQ(all[0].value.kind, QZLOG_TEXT);
  EXPECT_EQ(all[1].value.kind, QZLOG_NUMBER);
  EXPECT_EQ(all[1].value.number, 1.0);
  EXPECT_EQ(all[2].value.kind, QZLOG_TIME);
  EXPECT_EQ(all[3].value.kind, QZLOG_INTEGER);
  const qzlog_record odd = record_of(R"({"id":7,"attributes":{"Share":"-Infinity"}})");
  host_->forget();
  const qzlog_value share = host().find_attribute(host().context, &odd, "Share");
  EXPECT_EQ(share.kind, QZLOG_NUMBER);
  EXPECT_EQ(share.number, -HUGE_VAL);
  EXPECT_EQ(host().find_attribute(host().context, &odd, "Name").kind, QZLOG_ABSENT);
}

TEST_F(RecordHostTest, Moments_HaveNanosecondsWhereTheLineHas) {
  const auto moment = [this](std::string_view line, bool is_entry) {
    qzlog_record record = record_of(line);
    if (!is_entry) {
      record.id = 0;
      record.level = -1;
    }
    host_->forget();
    std::int64_t nanoseconds = -1;
    const int found = host().moment(host().context, &record, &nanoseconds);
    EXPECT_EQ(found != 0, nanoseconds != -1);
    return nanoseconds;
  };
  EXPECT_EQ(moment(R"({"id":7,"time":"2026-11-21T08:15:30Z"})", true), 1795248930'000000000);
  EXPECT_EQ(moment(R"({"id":7,"time":"2026-11-21T09:15:30.25+01:00"})", true), 1795248930'250000000);
  EXPECT_EQ(moment(R"({"lost":[],"written":"2026-11-21T08:15:30.123456789Z"})", false), 1795248930'123456789);
  EXPECT_EQ(moment(R"({"id":7})", true), -1);
  EXPECT_EQ(moment("no JSON", true), -1);
}

TEST_F(RecordHostTest, Bodies_AreMessagesAndBrokenLinesHaveNone) {
  EXPECT_EQ(body(record_of(R"({"id":7,"attributes":{"Name":"vol1"}})")), "vol1 is full");
  EXPECT_EQ(body(record_of(R"({"id":8})")), "none");
  EXPECT_EQ(body(record_of("no JSON")), "none");
  EXPECT_EQ(body(record_of(R"({"id":7,"attributes":{"Name":"vol2"}})")), "vol2 is full");
  EXPECT_EQ(body(record_of(R"({"lost":[{"id":7,"level":2,"count":3}]})")), "lost: 3 of entry ID 7, level 2");
}

TEST_F(RecordHostTest, WithoutDefinitions_ThereAreNoBodies) {
  const KnownDefinitions none;
  const RecordHost host(
      none, nullptr, [](const std::string&) {}, [] { return false; });
  const qzlog_record record = record_of(R"({"id":7})");
  qzlog_text body = {};
  EXPECT_EQ(host.host().body(host.host().context, &record, &body), 0);
}

TEST_F(RecordHostTest, Warnings_AreToldOnceAndEndingsWhenTheyAre) {
  host().warn(host().context, "short window");
  host().warn(host().context, "short window");
  EXPECT_EQ(warnings_, "short window\n");
  EXPECT_EQ(host().is_ending(host().context), 0);
  is_ending_ = true;
  EXPECT_NE(host().is_ending(host().context), 0);
}

}  // namespace
}  // namespace qzlog_tool
