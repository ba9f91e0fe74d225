#include "tools/diff/diff_report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tools/compiler/model/model_json.h"
#include "tools/diff/model_diff.h"

namespace {

using qzlog_compiler::AcceptedBreak;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::DiffChange;
using qzlog_tool::DiffReport;

DefinitionModel model_with_mask(std::uint32_t mask, std::string message_id) {
  DefinitionModel model;
  model.version = "2.5";
  model.entries.emplace_back();
  model.entries[0].id = 7;
  model.entries[0].mask = mask;
  model.entries[0].message_id = std::move(message_id);
  return model;
}

class DiffReportTest : public ::testing::Test {
 protected:
  DiffReportTest() {
    accepted_.reason = "Meant.";
    for (DiffChange& change : qzlog_compiler::compare_models(old_model_, new_model_)) {
      report_.changes.push_back({std::move(change)});
    }
    report_.changes.at(0).accepted = &accepted_;
    report_.new_version = "2.5";
    report_.advice = {qzlog_compiler::VersionStep::kMajor, "3.0", std::nullopt};
  }

  std::string printed(bool colour) const {
    std::ostringstream out;
    qzlog_tool::print_diff(out, report_, colour);
    return out.str();
  }

  DefinitionModel old_model_ = model_with_mask(1, "full");
  DefinitionModel new_model_ = model_with_mask(4, "\xFF\x1B");
  AcceptedBreak accepted_;
  DiffReport report_;
};

TEST_F(DiffReportTest, WithoutColour_IsPlainTextWithControlCharactersAsEscapes) {
  EXPECT_EQ(printed(false),
            "entry 7\n"
            "  accepted (filter): mask: 0x00000001 -> 0x00000004 [mask-changed]\n"
            "    Meant.\n"
            "  breaks render, translation: catalog key: full -> \"\uFFFD\\u001B\" [message-id-changed]\n"
            "1 break, 1 accepted, 0 safe changes\n"
            "The version has to become 3.0 or later; it is 2.5.\n");
}

TEST_F(DiffReportTest, WithColour_SetsOffBreaksAndAcceptedOnes) {
  const std::string text = printed(true);
  EXPECT_NE(text.find("  \033[1;35maccepted\033[0m (filter): "), std::string::npos);
  EXPECT_NE(text.find("  \033[1;31mbreaks\033[0m render, translation: "), std::string::npos);
}

TEST_F(DiffReportTest, Json_ReplacesWhatIsNotUtf8) {
  const auto json = nlohmann::json::parse(qzlog_compiler::json_text(qzlog_tool::to_json(report_)));
  EXPECT_EQ(json.at("changes").at(1).at("after"), "\uFFFD\x1B");
  EXPECT_EQ(json.at("changes").at(0).at("accepted"), "Meant.");
  EXPECT_EQ(json.at("breaks"), 1);
}

TEST(DiffReport, NothingChanged_SaysSo) {
  std::ostringstream out;
  qzlog_tool::print_diff(out, DiffReport(), false);
  EXPECT_EQ(out.str(), "no change\n");
}

}  // namespace
