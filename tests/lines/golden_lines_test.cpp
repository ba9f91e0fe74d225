// Lines as they are written, in a file that the check of their JSON Schema reads as well. QZLOG_REWRITE_GOLDEN=1 writes
// what comes out now.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "lines/line_envelope.h"
#include "lines/line_writer.h"
#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"
#include "tests/support/strict_json.h"

namespace qzlog {
namespace {

using namespace qz_test;

std::string plain_line() {
  qz_LOG_LogEntry entry(kId, 3);
  entry.AddAttribStr("TypeChar32", "vol1");
  entry.AddAttrib4u("TypeUInt4", 0);
  entry.AddAttribFloat8("TypeFloat", 0.875);
  return entry.ToJson();
}

std::string line_with_every_type() {
  qz_LOG_LogEntry entry(kId, 9);
  entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930), true);
  entry.AddAttribBool("TypeBool", true);
  entry.AddAttrib1("TypeSInt1", -1);
  entry.AddAttrib4("TypeSInt4", -2147483647 - 1);
  entry.AddAttribFloat8("TypeFloat", -HUGE_VAL);
  entry.AddAttribFloat8("GlobalTypeFloat", 1e300);
  entry.AddAttribTime("TypeTimestamp", qz_Time::from_unix_seconds(-1));
  entry.AddAttribMBStr("TypeMBChar64", "Gr\u00F6\u00DFe \"\\\n\t\x01 \U0001F600");
  return entry.ToJson(true);
}

std::string line_with_bytes() {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttribStr("TypeChar64", "K\xF6ln");
  return entry.ToJson(false, 2);
}

std::string line_of_a_writer(LineEnvelope& envelope) {
  _qz_LOG_log_entry_imp entry(kId, 5);
  entry.add_attrib_4u("TypeUInt4", 7);
  std::string line;
  envelope.append_head(line, 1, {1795248930, 123456789});
  append_entry_json(LineBeginning::kNone, entry, {}, {KnownName::of("DISK_FULL"), nullptr}, line);
  return line;
}

std::string line_of_a_loss(LineEnvelope& envelope) {
  std::string line;
  envelope.append_head(line, 2, {1795248931, 0});
  return line + R"("lost":[{"id":1001,"level":3,"count":12,"since":"2026-11-21T08:15:30Z"}]})";
}

std::string line_of_held_ones(LineEnvelope& envelope) {
  std::string line;
  envelope.append_head(line, 3, {1795248932, 0});
  return line + R"("held":[{"id":1001,"level":3,"count":990,"since":"2026-11-21T08:15:30.250000000Z"}]})";
}

class GoldenLines : public EntryTest {};

TEST_F(GoldenLines, AreWrittenAsBefore) {
  const TimeZone zone("Asia/Kathmandu");
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  qz_LOG_LogConfig::GetDefinitionTable()->definitions_digest();
  LineEnvelope envelope("filer-1/4711/20261121T081530.000000001");
  std::string lines;
  for (const std::string& line : {plain_line(), line_with_every_type(), line_with_bytes(), line_of_a_writer(envelope),
                                  line_of_a_loss(envelope), line_of_held_ones(envelope)}) {
    EXPECT_NO_THROW(StrictJson::parse(line)) << line;
    lines += line + '\n';
  }
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) std::ofstream(QZLOG_GOLDEN_LINES) << lines;
  std::ostringstream golden;
  golden << std::ifstream(QZLOG_GOLDEN_LINES).rdbuf();
  EXPECT_EQ(lines, golden.str());
}

}  // namespace
}  // namespace qzlog
