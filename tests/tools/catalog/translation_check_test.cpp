#include "tools/catalog/translation_check.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/tools/catalog/source_messages.h"

namespace qzlog_catalog {
namespace {

class LowerTranslation : public ::testing::Test {
 protected:
  /// What the translation is stored as; none is asserted to have a reason, any other not to.
  std::optional<std::string> lowered(const std::string& translation, const char* id = "TEXT") {
    Findings findings;
    std::optional<std::string> stored = lower_translation(*messages_.find(id), translation, "f.po", 7, findings);
    EXPECT_NE(stored.has_value(), findings.has_errors());
    found_ = printed(findings);
    return stored;
  }

  const CatalogMessages messages_ = messages_of({{"s.yaml", R"(version: "1.0"
globals: [{name: SITE, type: MBChar32}]
entries:
  - id: 1
    name: TEXT
    message: "{A} at {SITE} since {T}, {N}"
    attributes: [{name: A, type: Char32}, {name: T, type: Timestamp}, {name: N, type: UInt4}]
  - {id: 2, name: RAW, raw: "%s%A% and more%_%TIMESTAMP%", attributes: [{name: A, type: Char32}]}
  - {id: 4, name: LOSING, raw: "%s%A% lost", attributes: [{name: A, type: Char32}]}
  - {id: 5, name: NUMBER, raw: "%d%N% pieces%_%TIMESTAMP%", attributes: [{name: N, type: UInt2}]}
  - {id: 6, name: LATER, raw: "%s%Nobody% and %s%VERSION_ID%"}
  - {id: 3, name: PLAIN, message: "nothing to fill in"}
)"}});
  std::string found_;
};

TEST_F(LowerTranslation, SameReferencesInAnyOrder_AreTaken) {
  EXPECT_EQ(lowered("{N}: {T}, {SITE}, {A}"), "%d%N%: %D%T% %T%T%, %s%SITE%, %s%A%");
  EXPECT_EQ(lowered("{T:T} {T:D} {A:s} {SITE} {N:d}!"), "%T%T% %D%T% %s%A% %s%SITE% %d%N%!%_%TIMESTAMP%");
}

TEST_F(LowerTranslation, TextWithoutReferences_IsClosed) {
  EXPECT_EQ(lowered("it's {{}}", "PLAIN"), "it's '{}'%_%TIMESTAMP%");
}

TEST_F(LowerTranslation, Template_IsKeptAsItStands) {
  EXPECT_EQ(lowered("mehr als %s%A%", "RAW"), "mehr als %s%A%");
  EXPECT_EQ(lowered("'{'%s%A%'}'%x%A%", "RAW"), "'{'%s%A%'}'%x%A%");
  EXPECT_EQ(lowered("mehr als %s%A% %s%A%", "RAW"), std::nullopt);
  EXPECT_EQ(found_,
            "f.po:7: error: the translation has '%s%A%', which the source text has not, or not as often "
            "[reference-added]\n");
  EXPECT_EQ(lowered("mehr%_%TIMESTAMP%", "RAW"), std::nullopt);
  EXPECT_EQ(found_, "f.po:7: error: the translation lacks '%s%A%', which the source text has [reference-lost]\n");
}

TEST_F(LowerTranslation, TemplateThatCannotBeShown_IsRefusedForTheReasonThatACheckGives) {
  EXPECT_EQ(lowered("mehr als {%s%A%", "RAW"), std::nullopt);
  EXPECT_EQ(found_, "f.po:7: error: ICU refuses the pattern with U_PATTERN_SYNTAX_ERROR [rejected-pattern]\n");
  EXPECT_EQ(lowered("mehr als {0,number} %s%A%", "RAW"), std::nullopt);
  EXPECT_EQ(found_,
            "f.po:7: error: ICU takes the pattern but cannot apply it (U_INVALID_FORMAT_ERROR), and the library then "
            "ends the process [rejected-pattern]\n");
  EXPECT_EQ(lowered("mehr als %s%A% %x%Nobody%", "RAW"), std::nullopt);
  EXPECT_EQ(found_, "f.po:7: error: unknown attribute 'Nobody' [unknown-attribute]\n");
}

TEST_F(LowerTranslation, EndThatOnlyTheTranslationLoses_IsRefused) {
  EXPECT_EQ(lowered("%s%A% und mehr", "RAW"), std::nullopt);
  EXPECT_EQ(found_, "f.po:7: error: ' und mehr' is never shown [lost-text]\n");
  EXPECT_EQ(lowered("weg%%%s%A%", "RAW"), "weg%%%s%A%");  // lost on purpose, not at the end
  EXPECT_EQ(lowered("%s%A% Verlust", "LOSING"), "%s%A% Verlust");
}

TEST_F(LowerTranslation, TheOtherFormatOfAnInteger_IsTaken) {
  EXPECT_EQ(lowered("%u%N% Stück%_%TIMESTAMP%", "NUMBER"), "%u%N% Stück%_%TIMESTAMP%");
}

// An auxiliary file may define what the source text refers to.
TEST_F(LowerTranslation, ReferencesThatFailInTheSourceTextToo_AreTaken) {
  EXPECT_EQ(lowered("%s%VERSION_ID%: %s%Nobody%", "LATER"), "%s%VERSION_ID%: %s%Nobody%");
  EXPECT_EQ(lowered("%s%VERSION_ID% %s%Nobody% %s%PRODUCT_ID%", "LATER"), std::nullopt);
}

TEST_F(LowerTranslation, SeveralMistakes_AreAllReported) {
  EXPECT_EQ(lowered("{A} {A} {T:D} {N:P}"), std::nullopt);
  EXPECT_EQ(found_,
            "f.po:7: error: the translation has '{N:P}' where the source text has '{N:d}', another format "
            "[reference-format]\n"
            "f.po:7: error: the translation lacks '{SITE:s}', which the source text has [reference-lost]\n"
            "f.po:7: error: the translation lacks '{T:T}', which the source text has [reference-lost]\n"
            "f.po:7: error: the translation has '{A:s}', which the source text has not, or not as often "
            "[reference-added]\n");
}

TEST_F(LowerTranslation, TextThatCannotBeShown_NamesTheCompilersRule) {
  EXPECT_EQ(lowered("{A}{SITE} {T} {N}"), std::nullopt);
  EXPECT_EQ(found_, "f.po:7: error: no path can show two placeholders side by side [adjacent-placeholders]\n");
}

}  // namespace
}  // namespace qzlog_catalog
