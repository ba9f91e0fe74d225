#include "tools/templates/reference_comparison.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

using qzlog_compiler::RenderingPath;

/// Letters for the kind (format, lost, added) and for what the other text has (nothing, another format, the same one).
std::string differences(const std::string& expected, const std::string& found) {
  std::string text;
  for (const ReferenceDifference& difference : compare_references(references_in(expected, RenderingPath::kNarrow),
                                                                  references_in(found, RenderingPath::kNarrow))) {
    text += "fla"[static_cast<int>(difference.kind)];
    text += "nos"[static_cast<int>(difference.elsewhere)];
    text += ' ' + difference.name + ':';
    if (difference.expected != '\0') text += difference.expected;
    text += '>';
    if (difference.found != '\0') text += difference.found;
    text += '\n';
  }
  return text;
}

TEST(CompareReferences, SameInAnyOrder_NoDifference) {
  EXPECT_EQ(differences("%s%A% %d%B% %D%C%", "%D%C% x %s%A% %d%B%"), "");
  EXPECT_EQ(differences("", "no reference"), "");
}

TEST(CompareReferences, TheTwoFormatsOfIntegers_AreOne) {
  EXPECT_EQ(differences("%d%A% %u%A%", "%u%A% %d%A%"), "");
  EXPECT_EQ(differences("%d%A%", "%u%A%"), "");
  EXPECT_EQ(differences("%u%A% %P%A%", "%d%A%"), "lo A:P>\n");
}

TEST(CompareReferences, WhatShowsNothing_IsNoReference) { EXPECT_EQ(differences("%s%A%", "%x%B% %s%A% %_%C%"), ""); }

TEST(CompareReferences, LostAndAdded_SayWhetherTheOtherTextHasTheAttribute) {
  EXPECT_EQ(differences("%s%A% %s%B%", "%s%B%"), "ln A:s>\n");
  EXPECT_EQ(differences("%s%B%", "%s%A% %s%B%"), "an A:>s\n");
  EXPECT_EQ(differences("%D%A% %T%A%", "%D%A%"), "lo A:T>\n");
  EXPECT_EQ(differences("%D%A%", "%D%A% %T%A%"), "ao A:>T\n");
  EXPECT_EQ(differences("%s%A% %s%A%", "%s%A%"), "ls A:s>\n");
  EXPECT_EQ(differences("%s%A%", "%s%A% %s%A%"), "as A:>s\n");
}

TEST(CompareReferences, ADifferenceThatIsThereSeveralTimes_ComesOnce) {
  EXPECT_EQ(differences("%s%A%", "%s%A% %s%A% %s%A%"), "as A:>s\n");
  EXPECT_EQ(differences("%d%A% %u%A%", "%P%A% %P%A%"), "fo A:d>P\nfo A:u>P\n");
}

TEST(CompareReferences, LostAndAddedOfOneAttribute_IsAnotherFormat) {
  EXPECT_EQ(differences("%d%A%", "%P%A%"), "fo A:d>P\n");
  EXPECT_EQ(differences("%d%A% %C%A%", "%P%A%"), "fo A:C>P\nlo A:d>\n");
}

TEST(CompareReferences, SeveralDifferences_ByKindThenByName) {
  EXPECT_EQ(differences("%s%C% %d%B% %s%A%", "%s%D% %P%B% %s%E%"), "fo B:d>P\nln A:s>\nln C:s>\nan D:>s\nan E:>s\n");
}

TEST(CompareReferences, Findings_WriteReferencesAsTheirTextDoes) {
  const ReferenceDifference lost{ReferenceDifference::Kind::kLost, "A", 's', '\0'};
  EXPECT_EQ(rule_of(lost).name(), "reference-lost");
  EXPECT_EQ(text_of(lost, ReferenceNotation::kPlaceholder), "the translation lacks '{A:s}', which the source text has");
  EXPECT_EQ(text_of(lost, ReferenceNotation::kTemplate), "the translation lacks '%s%A%', which the source text has");
  const ReferenceDifference added{ReferenceDifference::Kind::kAdded, "A", '\0', 's'};
  EXPECT_EQ(rule_of(added).name(), "reference-added");
  EXPECT_EQ(text_of(added, ReferenceNotation::kPlaceholder),
            "the translation has '{A:s}', which the source text has not, or not as often");
  const ReferenceDifference format{ReferenceDifference::Kind::kFormat, "A", 'd', 'P'};
  EXPECT_EQ(rule_of(format).name(), "reference-format");
  EXPECT_EQ(text_of(format, ReferenceNotation::kPlaceholder),
            "the translation has '{A:P}' where the source text has '{A:d}', another format");
}

}  // namespace
}  // namespace qzlog_tool
