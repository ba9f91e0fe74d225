#ifndef QZLOG_TESTS_LINES_LINES_FIXTURE_H
#define QZLOG_TESTS_LINES_LINES_FIXTURE_H

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/ldf_file.h"
#include "tests/support/names_section.h"
#include "tests/support/support.h"

namespace qz_test {

/// Says everything that can be read from an entry; doubles by their bits, texts with their lengths.
class EntryDescription : public qz_LOG_AttributeVisitor {
 public:
  explicit EntryDescription(const qz_LOG_LogEntry& entry)
      : text_(std::to_string(entry.GetEntryID()) + " level " + std::to_string(entry.GetLogLevel()) + " mask " +
              std::to_string(entry.GetPropertyMask()) + " time " +
              std::to_string(entry.GetTimestamp(true).unix_seconds()) + ":") {
    entry.VisitAttributes(*this);
  }
  const std::string& text() const { return text_; }

  void VisitBool(const char* name, qz_AttributeType type, bool value) override {
    add(name, type, value ? "true" : "false");
  }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned value) override {
    add(name, type, std::to_string(value));
  }
  void VisitSigned(const char* name, qz_AttributeType type, int value) override {
    add(name, type, std::to_string(value));
  }
  void VisitFloat(const char* name, qz_AttributeType type, double value) override {
    add(name, type, std::to_string(value) + " bits " + std::to_string(std::bit_cast<std::uint64_t>(value)));
  }
  void VisitText(const char* name, qz_AttributeType type, const char* text, unsigned length) override {
    add(name, type, std::string(text, length) + "(" + std::to_string(length) + ")");
  }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time& value) override {
    add(name, type, std::to_string(value.unix_seconds()));
  }

 private:
  void add(const char* name, qz_AttributeType type, const std::string& value) {
    text_ += std::string(" ") + name + "/" + std::to_string(type) + "=" + value;
  }
  std::string text_;
};

inline std::string described(const qz_LOG_LogEntry& entry) { return EntryDescription(entry).text(); }

/// Notes the errors of lines: LINE:COLUMN: RULE: TEXT.
class ErrorNotes : public qz_LOG_LineErrorHandler {
 public:
  void TakeLineError(const qz_LOG_LineError& error) override {
    notes.push_back(std::string(error.file) + (error.file[0] != '\0' ? ":" : "") + std::to_string(error.line) + ":" +
                    std::to_string(error.column) + ": " + error.rule + ": " + error.text);
  }

  std::vector<std::string> notes;
};

/// The definitions of the tests of lines: entry 7 with an attribute of every type, and others that share its place
/// among kept entries.
class LinesTest : public ::testing::Test {
 protected:
  LinesTest() {
    LdfFile file;
    file.globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}, {"Anywhere", TypeUInt4}};
    file.entries = {
        {.id = 7,
         .mask = 1,
         .message_text = "every type",
         .attributes = {{"B", TypeBool},         {"U1", TypeUInt1},       {"S1", TypeSInt1},     {"U2", TypeUInt2},
                        {"S2", TypeSInt2},       {"U4", TypeUInt4},       {"S4", TypeSInt4},     {"F", TypeFloat},
                        {"C", TypeChar32},       {"C64", TypeChar64},     {"C128", TypeChar128}, {"C256", TypeChar256},
                        {"C1K", TypeChar1K},     {"C2K", TypeChar2K},     {"M", TypeMBChar32},   {"M64", TypeMBChar64},
                        {"M128", TypeMBChar128}, {"M256", TypeMBChar256}, {"M1K", TypeMBChar1K}, {"M2K", TypeMBChar2K},
                        {"D", TypeDate},         {"T", TypeTime},         {"S", TypeTimestamp},  {"G", TypeGUID}}},
        {.id = 71, .mask = 2, .message_text = "also", .attributes = {{"A", TypeSInt4}, {"B", TypeMBChar32}}},
        {.id = 8, .mask = 4, .message_text = "eight", .attributes = {{"B", TypeSInt2}}}};
    load(with_names(file.bytes(), {.events = {{7, {"EVERY_TYPE", ""}}, {71, {"SEVENTY_ONE", ""}}}}));
  }
  ~LinesTest() override {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetICUEnabled(true);
    qz_LOG_LogConfig::SetCodePage("UTF-8");
  }

  void load(const LdfFile& file) { load(file.bytes()); }
  void load(const std::string& bytes) {
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("lines.ldf", bytes).c_str());
  }

  /// What a line becomes: the entry's description, else "rule: text" of the error.
  std::string outcome(qz_LOG_EntryLine& line, const std::string& text) {
    ErrorNotes errors;
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size(), &errors);
    if (reader.Next(line)) return described(line.GetEntry());
    return errors.notes.empty() ? "nothing" : errors.notes[0].substr(errors.notes[0].find(": ") + 2);
  }
  std::string outcome(const std::string& text) { return outcome(line_, text); }

  TimeZone zone_{"Asia/Kathmandu"};
  TempDir folder_;
  qz_LOG_EntryLine line_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_LINES_LINES_FIXTURE_H
