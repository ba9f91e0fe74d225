#ifndef QZLOG_TESTS_TOOLS_CHOICE_CHOICE_FIXTURE_H
#define QZLOG_TESTS_TOOLS_CHOICE_CHOICE_FIXTURE_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "tests/support/support.h"
#include "tools/choice/known_definitions.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/loaded_definitions.h"

namespace qz_test {

/// The moment that tests take for the present: 2026-11-21 08:15:30 GMT.
inline constexpr long long kNow = 1795248930;

/// Attributes of every kind; `Free` and `Mixed` have several types.
inline constexpr const char* kChoiceDefinitions = R"(version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
  - {name: Pool, type: Char32}
entries:
  - id: 1
    name: DISK_FULL
    mask: 1
    message: full
    attributes:
      - {name: Name, type: Char32}
      - {name: Free, type: UInt2}
      - {name: Small, type: SInt1}
      - {name: Mixed, type: SInt4}
      - {name: Load, type: Float}
      - {name: Flag, type: Bool}
      - {name: When, type: Timestamp}
      - {name: Guid, type: GUID}
      - {name: "odd name", type: UInt1}
      - {name: level, type: UInt1}
  - id: 2
    name: DISK_OK
    mask: 6
    message: ok
    attributes:
      - {name: Name, type: MBChar64}
      - {name: Free, type: UInt4}
      - {name: Mixed, type: Char64}
      - {name: Reason, type: SInt2}
      - {name: Day, type: Date}
      - {name: Clock, type: Time}
      - {name: Turn, type: Time}
  - id: 3
    name: LINK_DOWN
    mask: 8
    message: down
    attributes:
      - {name: Reason, type: SInt2}
      - {name: Turn, type: Timestamp}
)";

class ChoiceTest : public ::testing::Test {
 protected:
  ChoiceTest() { load(kChoiceDefinitions); }
  ~ChoiceTest() override {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetICUEnabled(true);
    qz_LOG_LogConfig::SetCodePage("");
  }

  void load(const std::string& source) {
    const std::string path = folder_.write("events.yaml", source);
    qzlog_tool::load_definitions(path, "", qzlog_compiler::RenderingPaths::kIcu);
    const qzlog_tool::Definitions definitions =
        qzlog_tool::read_errors_only(qzlog_tool::read_definition_file(path), {});
    ASSERT_TRUE(definitions.ok());
    known_ = qzlog_tool::KnownDefinitions();
    known_.add(definitions.model);
  }

  /// The same definitions without the names of events.
  void load_without_names() {
    qzlog_compiler::DefinitionModel model =
        qzlog_tool::read_errors_only(qzlog_tool::read_definition_file(folder_.path("events.yaml")), {}).model;
    for (qzlog_compiler::EntryDefinition& entry : model.entries) entry.name.clear();
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("nameless.ldf", qzlog_compiler::write_ldf(model)).c_str());
    known_ = qzlog_tool::KnownDefinitions();
    known_.add(model);
  }

  /// The entry of a line, which has to be one. Valid until the next call.
  const qz_LOG_EntryLine& line(const std::string& text) {
    text_ = text;
    reader_.emplace(qz_LOG_EntryReader::FromMemory(text_.data(), text_.size()));
    EXPECT_TRUE(reader_->Next(line_)) << text;
    return line_;
  }

  TimeZone zone_{"Asia/Kathmandu"};
  TempDir folder_;
  qzlog_tool::KnownDefinitions known_;
  std::string text_;
  std::optional<qz_LOG_EntryReader> reader_;
  qz_LOG_EntryLine line_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_TOOLS_CHOICE_CHOICE_FIXTURE_H
