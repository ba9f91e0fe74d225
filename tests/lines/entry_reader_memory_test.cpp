#include <gtest/gtest.h>

#include <string>

#include "tests/lines/lines_fixture.h"

namespace {

using qz_test::AllocationFailure;
using qz_test::described;

class EntryReaderMemory : public qz_test::LinesTest {
 protected:
  class Rules : public qz_LOG_LineErrorHandler {
   public:
    void TakeLineError(const qz_LOG_LineError& error) override {
      ++count;
      is_memory = std::string_view(error.rule) == "out-of-memory";
    }
    unsigned count = 0;
    bool is_memory = true;
  };

  // Reads two lines while an allocation fails, then all that is left: each line is the entry or an error of that line.
  void read_with_failure(const std::string& text, unsigned nth, AllocationFailure::Reach reach, bool& happened) {
    Rules rules;
    unsigned lines = 0;
    bool thrown = false;
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size(), &rules);
    qz_LOG_EntryLine line;
    {
      const AllocationFailure failure(nth, reach);
      try {
        for (int count = 0; count < 2; ++count) lines += reader.Next(line) ? 1 : 0;
      } catch (const QZX_memory_alloc&) {
        thrown = true;
      }
      happened = failure.happened();
    }
    while (reader.Next(line)) ++lines;
    ASSERT_TRUE(happened || (rules.count == 0 && !thrown)) << nth;
    ASSERT_TRUE(rules.is_memory) << nth;
    ASSERT_EQ(lines + rules.count, 4U) << nth;
    ASSERT_EQ(outcome(line, text.substr(0, text.find('\n'))), outcome(text.substr(0, text.find('\n'))));
  }

  void fail_every_allocation(const std::string& line) {
    const std::string text = line + "\n" + line + "\n" + line + "\n" + line;
    for (const AllocationFailure::Reach reach : {AllocationFailure::kOnce, AllocationFailure::kFromThenOn}) {
      unsigned nth = 1;
      for (bool happened = true; happened; ++nth) {
        ASSERT_NO_FATAL_FAILURE(read_with_failure(text, nth, reach, happened));
      }
      EXPECT_GT(nth, 3U);
    }
  }
};

TEST_F(EntryReaderMemory, PlainLine_IsReadOrAnErrorOfItsOwn) {
  fail_every_allocation(
      R"({"writer":"a-host-with-a-long-name/12345/2026-11-21T08:15:30Z","seq":7,"id":7,"time":"2026-11-21T08:15:30Z","attributes":{"C":"a text of more than sixteen","M":"another text, also longer","U1":1}})");
}

TEST_F(EntryReaderMemory, LineWithEscapesAndBytes_IsReadOrAnErrorOfItsOwn) {
  fail_every_allocation(
      R"({"writer":"a-host-with-a-long-name/12345/2026-11-21T08:15:30Z","id":"EVERY_TYPE","attributes":{"C":"a text\u0020of more than sixteen","M":"x"},"bytes":{"M":"YW5vdGhlciB0ZXh0LCBhbHNvIGxvbmc="}})");
}

TEST_F(EntryReaderMemory, Loss_IsReadOrAnErrorOfItsOwn) {
  const std::string line =
      R"({"lost":[{"id":1,"level":3,"count":12,"since":"2026-11-21T08:15:30.123456Z"},{"id":2,"level":3,"count":12}]})";
  fail_every_allocation(line);
}

TEST_F(EntryReaderMemory, Making_ThrowsWithoutMemory) {
  const std::string path = folder_.write("a.jsonl", "{}");
  EXPECT_GT(qz_test::FailEveryAllocation([&] { qz_LOG_EntryReader::FromPath(path.c_str()); }), 0U);
  EXPECT_GT(qz_test::FailEveryAllocation([] { qz_LOG_EntryReader::FromMemory("", 0); }), 0U);
  EXPECT_GT(qz_test::FailEveryAllocation([] { qz_LOG_EntryReader::FromDescriptor(0, "a name, not too short"); }), 0U);
  EXPECT_GT(qz_test::FailEveryAllocation([] { const qz_LOG_EntryLine line; }), 0U);
}

TEST_F(EntryReaderMemory, SteadyState_TakesNoMemory) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the library keeps no memory for the next text under the sanitizers";
#endif
  std::string text;
  for (int count = 0; count < 1000; ++count) {
    text +=
        R"({"writer":"a-host-with-a-long-name/12345/34","seq":7,"id":7,"time":"2026-11-21T08:15:30Z","attributes":{"C":"a text of more than sixteen","F":0.5,"U1":1}})"
        "\n"
        R"({"id":7,"attributes":{"C":"a \u0074ext of more than sixteen","F":-1e-7,"C128":"and so on and so on and so on"}})"
        "\n";
  }
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size());
  for (int count = 0; count < 10; ++count) ASSERT_TRUE(reader.Next(line_));
  bool all = true;
  bool happened = false;
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    for (int count = 0; count < 1000; ++count) all = reader.Next(line_) && all;
    happened = failure.happened();
  }
  EXPECT_TRUE(all);
  EXPECT_FALSE(happened);
}

}  // namespace
