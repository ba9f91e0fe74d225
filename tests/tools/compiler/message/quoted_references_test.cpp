#include "tools/compiler/message/quoted_references.h"

#include <gtest/gtest.h>
#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include <set>
#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_compiler {
namespace {

struct QuoteCase {
  const char* stored;
  bool quoted;
};

TEST(FindQuotedReferences, ApostropheBeforeABrace_BeginsAQuotation) {
  const QuoteCase cases[] = {
      {"'%s%A%'", true},       // directly before it
      {"''%s%A%''", false},    // a literal apostrophe
      {"'''%s%A%", true},      // a literal one, and one that quotes
      {"don't %s%A%", false},  // before a letter it is literal
      {"'{x}%s%A%", true},     // a brace was quoted, and nothing ended it
      {"'{x}'%s%A%", false},   // here it was ended
      {"'{''x'%s%A%", false},  // two in quoted text are a literal one
      {"'{''x%s%A%", true},    //
      {"'}'' %s%A%", true},    //
      {"%s%A%'", false},       // behind it
      {"%x%A%'%s%A%", true},   // a reference that shows nothing changes nothing
      {"'%x%A%", false},       //
  };
  for (const QuoteCase& item : cases) {
    const std::vector<TemplatePart> found = find_quoted_references(cut_template(item.stored, TemplateForm::kIcu));
    EXPECT_EQ(found.size(), item.quoted ? 1U : 0U) << item.stored;
    for (const TemplatePart& reference : found) EXPECT_EQ(reference.text, "A") << item.stored;
  }
}

/// The numbers of the references that ICU sees in the pattern of a template. Its texts hold no digits.
std::set<int> references_of_icu(const StoredTemplate& stored, UErrorCode& status) {
  std::string pattern;
  int count = 0;
  for (const TemplatePart& part : stored.parts) {
    pattern += part.is_reference() ? "{" + std::to_string(count++) + "}" : part.text;
  }
  const icu::MessagePattern parsed(icu::UnicodeString::fromUTF8(pattern), nullptr, status);
  std::set<int> numbers;
  if (U_FAILURE(status)) return numbers;
  for (int i = 0; i < parsed.countParts(); ++i) {
    if (parsed.getPart(i).getType() == UMSGPAT_PART_TYPE_ARG_NUMBER) numbers.insert(parsed.getPart(i).getValue());
  }
  return numbers;
}

std::string random_template(qz_test::SeededRandom& random) {
  constexpr const char* kPieces[] = {"'", "'", "'", "{", "}", "x", " "};
  std::string stored;
  for (int reference = 0; reference < 4; ++reference) {
    const long long pieces = random.between(1, 5);  // two percent signs side by side are an escape
    for (long long i = 0; i < pieces; ++i) stored += kPieces[random.between(0, 6)];
    stored += "%s%R" + std::to_string(reference) + "%";
  }
  return stored;
}

TEST(FindQuotedReferences, RandomTemplates_LoseTheReferencesThatIcuDoesNotSee) {
  qz_test::SeededRandom random;
  int accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::string stored = random_template(random);
    const StoredTemplate cut = cut_template(stored, TemplateForm::kIcu);
    UErrorCode status = U_ZERO_ERROR;
    std::set<int> seen = references_of_icu(cut, status);
    if (U_FAILURE(status)) continue;
    ++accepted;
    for (const TemplatePart& part : find_quoted_references(cut)) {
      EXPECT_TRUE(seen.insert(part.text.back() - '0').second) << stored;
    }
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3})) << stored;
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace qzlog_compiler
