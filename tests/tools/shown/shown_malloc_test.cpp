// Showing a line takes no memory once lines like it have been shown.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/malloc_failure.h"
#include "tests/tools/shown/shown_fixture.h"

namespace {

using qzlog_test::ShownFixture;
using qzlog_tool::Presentation;
using qzlog_tool::ShownOptions;
using qzlog_tool::ShownTimes;

std::string many_lines() {
  std::string lines;
  for (int second = 10; second < 60; ++second) {
    lines += R"({"writer":"web1/4711/1795853730","seq":)" + std::to_string(second) +
             R"(,"written":"2026-11-21T08:15:30.000120000Z","id":1001,"level":7,"time":"2026-11-21T08:15:)" +
             std::to_string(second) + R"(Z","attributes":{"Name":"vol1 is a rather long name of a volume","Free":0}})" +
             "\n";
  }
  return lines;
}

TEST_F(ShownFixture, LinesAlike_TakeNoMemory) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers have an allocator of their own";
#endif
  for (const char* const output : {"text", "short", "long", "json", "csv", "table", "format"}) {
    ShownOptions options;
    options.output = output;
    if (options.output == "format") {
      options.output = "text";
      options.format = "{time} {written} {host} {Name:<60} {Free:>10} {summary:.10} {mask}";
    }
    ShownTimes times = make_times(options);
    const std::unique_ptr<Presentation> presentation = make_presentation(options, {true, 100}, events_, times);
    std::string out;
    unsigned count = 0;
    bool took_memory = false;
    qzlog_test::for_each_line(many_lines(), [&](const qzlog_tool::ShownLine& shown) {
      out.clear();
      if (++count <= 10) {
        presentation->append(shown, out);
        return;
      }
      const qz_test::MallocFailure failure(1, qz_test::MallocFailure::kFromThenOn);
      try {
        presentation->append(shown, out);
      } catch (...) {  // of the library, or of the standard one
        took_memory = true;
      }
      took_memory = took_memory || qz_test::MallocFailure::happened();
    });
    EXPECT_EQ(count, 50u);
    EXPECT_FALSE(took_memory) << output;
  }
}

}  // namespace
