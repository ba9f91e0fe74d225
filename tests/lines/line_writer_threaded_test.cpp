#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "lines/line_writer.h"
#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"

namespace qzlog {
namespace {

using namespace qz_test;

class LineWriterThreaded : public EntryTest {};

// The first lines find out about the code page and the definition files, all at once.
TEST_F(LineWriterThreaded, FirstLinesInManyThreads_TheSameLines) {
  for (const char* const code_page : {"ISO-8859-7", "UTF-8", "ISO-8859-9"}) {
    load({.tag = "2.5", .globals = global_attributes(), .entries = standard_entries()});
    qz_LOG_LogConfig::SetCodePage(code_page);
    std::vector<std::thread> threads;
    std::vector<std::string> lines(8);
    for (std::string& line : lines) {
      threads.emplace_back([&line] {
        qz_LOG_LogEntry entry(kId, 3);
        entry.AddAttribStr("TypeChar32", "plain \xE1");
        for (int i = 0; i < 50; ++i) {
          line.clear();
          append_entry_body(entry, false, 0, line);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& line : lines) EXPECT_EQ(line, lines[0]);
    EXPECT_NE(qz_LOG_LogConfig::GetDefinitionTable()->find_definitions_digest(), nullptr);
  }
}

}  // namespace
}  // namespace qzlog
