#ifndef QZLOG_TESTS_TOOLS_MERGE_MERGE_FIXTURE_H
#define QZLOG_TESTS_TOOLS_MERGE_MERGE_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qzlog/logcfg.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/logs/log_reading.h"
#include "tools/merge/merged_logs.h"

namespace qzlog_test {

/// Logs whose entries have the ID 1 and the attribute N, merged.
class MergeFixture : public ::testing::Test, public qz_LOG_LineErrorHandler {
 protected:
  using Texts = std::vector<std::string>;

  MergeFixture() {
    qzlog_tool::load_definitions(folder_.write("d.yaml", kSource), "", qzlog_compiler::RenderingPaths::kNarrow);
  }
  ~MergeFixture() override { qz_LOG_LogConfig::ClearDefinitions(); }

  void TakeLineError(const qz_LOG_LineError& error) override {
    seen_.push_back(name_of(error.file) + ":" + std::to_string(error.line) + " " + error.rule);
  }

  qzlog_tool::MergeReading reading() {
    return {.open = [this](const std::string& path, bool may_be_gone) -> std::unique_ptr<qz_LOG_ByteSource> {
              return qzlog_tool::open_log(path, may_be_gone, output_);
            },
            .fail = [this](const std::string& reason) { failures_.push_back(reason); },
            .handler = this,
            .choice = choice_,
            .nothing = line_};
  }

  /// Each path is a log of its own. What is seen: FILE:LINE for an entry, with its rule behind it for an error.
  Texts merge(const Texts& paths) {
    std::vector<qzlog_tool::InputFiles> inputs;
    for (const std::string& path : paths) inputs.push_back({{path}, false});
    return merge(std::move(inputs));
  }
  Texts merge(std::vector<qzlog_tool::InputFiles> inputs) {
    seen_.clear();
    qzlog_tool::MergedLogs logs(std::move(inputs), reading());
    while (logs.Next(line_)) seen_.push_back(name_of(line_.GetFile()) + ":" + std::to_string(line_.GetLine()));
    all_read_ = logs.all_read();
    refused_ = logs.refused_count();
    return seen_;
  }

  static std::string name_of(const std::string& path) { return path.substr(path.rfind('/') + 1); }
  /// At a second of the minute 08:15.
  static std::string at(int second, int number = 1) {
    return R"({"id":1,"level":3,"time":"2026-11-21T08:15:)" + std::string(second < 10 ? "0" : "") +
           std::to_string(second) + R"(Z","attributes":{"N":)" + std::to_string(number) + "}}\n";
  }

  static constexpr const char* kSource =
      "version: \"1.0\"\n"
      "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
      "entries:\n  - {id: 1, name: EVENT, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n";

  qz_test::TempDir folder_;
  qzlog_tool::BufferedOutput output_{1, "standard output"};
  qz_LOG_EntryLine line_;
  qz_LOG_LineChoice* choice_ = nullptr;
  Texts seen_;
  Texts failures_;
  bool all_read_ = false;
  unsigned long long refused_ = 0;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_MERGE_MERGE_FIXTURE_H
