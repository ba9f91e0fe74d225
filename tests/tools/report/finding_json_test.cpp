#include "tools/report/finding_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/report/source_rules.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::Finding;
using qzlog_compiler::Rule;
using qzlog_compiler::Severity;

Finding full_finding() {
  Finding finding{"a.yaml", {3, 10}, Severity::kWarning, Rule::kPathConflict, "text"};
  finding.with_note({1, 1}, "first").with_hint("do this");
  finding.notes.push_back({"b.ldf", {}, "and here"});
  finding.entry_id = 7;
  finding.subject = "selector message 3";
  return finding;
}

TEST(FindingJson, Members_AreThoseThatTheFindingHas) {
  EXPECT_EQ(to_json(full_finding()).dump(),
            R"({"file":"a.yaml","line":3,"column":10,"entry":7,"subject":"selector message 3","severity":"warning",)"
            R"("rule":"path-conflict","text":"text","notes":[{"file":"a.yaml","line":1,"column":1,"text":"first"},)"
            R"({"file":"b.ldf","text":"and here"}],"hint":"do this"})");
  EXPECT_EQ(to_json({"a.yaml", 5, Severity::kError, Rule::kPathConflict, "text"}).dump(),
            R"({"file":"a.yaml","line":5,"severity":"error","rule":"path-conflict","text":"text"})");
}

TEST(FindingJson, PlaceInABinaryFile_IsItsOffset) {
  Finding finding{"a.ldf", {}, Severity::kError, Rule::kBadDefinitionFile, "text"};
  finding.offset = 18446744073709551615U;
  EXPECT_EQ(
      to_json(finding).dump(),
      R"({"file":"a.ldf","offset":18446744073709551615,"severity":"error","rule":"bad-definition-file","text":"text"})");
}

TEST(JsonResult, BeginsWithTheVersionAndTheFindings) {
  EXPECT_EQ(json_result({}).dump(), R"({"qzlog":1,"findings":[]})");
  const Finding finding = full_finding();
  EXPECT_EQ(json_result({&finding, 1}).at("findings").at(0), to_json(finding));
}

TEST(JsonResult, BytesThatAreNotUtf8_AreReplaced) {
  const Finding finding{"a\xFF", {}, Severity::kError, Rule::kBadDefinitionFile, "\x80"};
  const std::string text = json_result_text(json_result({&finding, 1}));
  EXPECT_NE(text.find("\"file\": \"a\uFFFD\""), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("}\n")) << text;
}

TEST(AddJsonBeginning, WithTheRest_IsTheSameResult) {
  const Finding findings[] = {full_finding(), full_finding(), {"\xFF", {}, Severity::kError, Rule::kBadNumber, "t"}};
  for (const std::size_t count : {0U, 1U, 3U}) {
    std::ostringstream text;
    qzlog_compiler::JsonObjectStream json(text, qzlog_compiler::kResultLayout);
    add_json_beginning({findings, count}, json);
    json.number("more", 1);
    json.end();
    const auto read = nlohmann::ordered_json::parse(text.str());
    nlohmann::ordered_json expected = nlohmann::ordered_json::parse(json_result_text(json_result({findings, count})));
    expected["more"] = 1;
    EXPECT_EQ(read.dump(), expected.dump()) << count;
  }
}

}  // namespace
}  // namespace qzlog_tool
