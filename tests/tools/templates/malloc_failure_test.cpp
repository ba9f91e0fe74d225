// Every allocation fails once: what ICU had no memory for is not taken for what it refuses.
#include "tests/support/malloc_failure.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/template_judge.h"

namespace {

using qz_test::MallocFailure;

constexpr unsigned kTooMany = 10'000;
// Longer than what ICU's strings hold in themselves, and without a number or a time: ICU does not survive every
// failure in those.
const std::string kTemplate =
    "A text with the argument %s%A% and another one behind it, %s%B%, it''s ended here%_%TIMESTAMP%";

std::string judge() {
  const auto lookup = [](std::string_view) { return std::optional(TypeMBChar256); };
  const auto judged = qzlog_compiler::judge_template(kTemplate, qzlog_compiler::RenderingPath::kIcu, lookup);
  std::string text;
  for (const auto& finding : judged.findings) text += finding.text + '\n';
  for (const auto& part : judged.shown.value_or(std::vector<qzlog_compiler::TemplatePart>())) text += '|' + part.text;
  return text;
}

/// How often the same came out, and how often std::bad_alloc.
void fail_each(std::string (*work)()) {
  const std::string expected = work();
  unsigned thrown = 0;
  for (unsigned nth = 1; nth < kTooMany; ++nth) {
    std::string found = expected;
    bool happened = false;
    {
      const MallocFailure failure(nth);
      try {
        found = work();
      } catch (const std::bad_alloc&) {
        ++thrown;
      }
      happened = MallocFailure::happened();
    }
    ASSERT_EQ(found, expected) << "at allocation " << nth;
    if (!happened) break;
  }
  EXPECT_GT(thrown, 0U);
}

class ToolsWithoutMemory : public testing::Test {
 protected:
  void SetUp() override {
#ifdef QZLOG_SANITIZED
    GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
  }
};

TEST_F(ToolsWithoutMemory, Judgement_IsTheSameOrThrows) { fail_each(judge); }

}  // namespace
