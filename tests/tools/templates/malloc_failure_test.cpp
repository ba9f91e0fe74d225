// Every allocation fails once: what ICU had no memory for is not taken for what it refuses.
#include "tests/support/malloc_failure.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "tools/compiler/message/template_failure.h"
#include "tools/templates/icu_pattern.h"
#include "tools/templates/template_syntax.h"

namespace {

using qz_test::MallocFailure;

constexpr unsigned kTooMany = 10'000;
// Longer than what ICU's strings hold in themselves, and without a number or a time: ICU does not survive every
// failure in those.
const std::string kTemplate =
    "A text with the argument %s%A% and another one behind it, %s%B%, it''s ended here%_%TIMESTAMP%";

std::string text_of(const qzlog_tool::PatternReading& reading) {
  std::string text = reading.refusal;
  for (const qzlog_tool::PatternPart& part : reading.parts) text += "|" + part.text;
  return text;
}

std::string read_pattern() {
  const auto cut = qzlog_compiler::cut_template(kTemplate, qzlog_compiler::TemplateForm::kIcu);
  return text_of(qzlog_tool::read_icu_pattern(cut, "root"));
}

std::string find_failure() {
  const auto lookup = [](std::string_view) { return std::optional(TypeMBChar256); };
  return qzlog_compiler::find_template_failure(kTemplate, qzlog_compiler::TemplateForm::kIcu, lookup);
}

std::string find_syntax_failure() { return qzlog_catalog::template_syntax_failure(kTemplate); }

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

TEST_F(ToolsWithoutMemory, Pattern_IsReadOrThrows) { fail_each(read_pattern); }
TEST_F(ToolsWithoutMemory, TemplateFailure_IsTheSameOrThrows) { fail_each(find_failure); }
TEST_F(ToolsWithoutMemory, SyntaxFailure_IsTheSameOrThrows) { fail_each(find_syntax_failure); }

}  // namespace
