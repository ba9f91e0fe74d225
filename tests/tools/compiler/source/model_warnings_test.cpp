#include "tools/compiler/source/model_warnings.h"

#include <gtest/gtest.h>

#include <set>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

/// A model as it comes from a compiled file: no positions, stored templates only.
EntryDefinition entry(std::uint32_t id, const std::string& stored, std::vector<AttributeDefinition> attributes = {}) {
  EntryDefinition result;
  result.id = id;
  result.message_id = "key";
  result.message.stored = stored;
  result.attributes = std::move(attributes);
  return result;
}

AttributeDefinition attribute(const std::string& name, qz_AttributeType type) { return {name, type, "", {}}; }

DefinitionModel model_of(std::vector<EntryDefinition> entries, std::vector<AttributeDefinition> globals = {}) {
  return {"1.0", std::move(globals), std::move(entries)};
}

/// One line per warning: entry, rule and text.
std::string found(const DefinitionModel& model, RenderingPaths path = RenderingPaths::kBoth,
                  const DefinitionModel* standard = nullptr) {
  std::string out;
  for (const ModelWarning& warning : find_model_warnings(model, standard, path)) {
    out += warning.about_entry ? std::to_string(warning.entry_id) : "file";
    out += " " + std::string(rule_name(warning.rule)) + ": " + warning.text + "\n";
    EXPECT_FALSE(warning.hint.empty());
  }
  return out;
}

TEST(FindModelWarnings, OrdinaryModel_HasNone) {
  const DefinitionModel model =
      model_of({entry(1, "%s%A% has %d%B%", {attribute("A", TypeChar32), attribute("B", TypeUInt2)})},
               {attribute("G", TypeUInt4)});
  for (const RenderingPaths path : {RenderingPaths::kBoth, RenderingPaths::kIcu, RenderingPaths::kNarrow}) {
    EXPECT_EQ(found(model, path), "");
  }
}

TEST(FindModelWarnings, EmptyModel_HasNone) { EXPECT_EQ(found({}), ""); }

struct FormatCase {
  const char* stored;
  RenderingPaths path;
  const char* text;
};

TEST(FindModelWarnings, LargeUnsignedNumbers_AreWrongAsThePathShowsThem) {
  constexpr const char* kNegative =
      "1 negative-unsigned: values of 'N' above 2147483647 show as negative numbers on the ICU path\n";
  constexpr const char* kOther =
      "1 negative-unsigned: values of 'N' above 2147483647 show as other numbers on the narrow path\n";
  const FormatCase cases[] = {
      {"%d%N%", RenderingPaths::kIcu, kNegative},
      {"%u%N%", RenderingPaths::kIcu, kNegative},
      {"%P%N%", RenderingPaths::kBoth, kNegative},
      {"%d%N%", RenderingPaths::kNarrow, ""},
      {"%u%N%", RenderingPaths::kNarrow, ""},
      {"%P%N%", RenderingPaths::kNarrow, kOther},
      {"%d%N% %d%N%", RenderingPaths::kBoth, kNegative},
  };
  for (const FormatCase& item : cases) {
    EXPECT_EQ(found(model_of({entry(1, item.stored, {attribute("N", TypeUInt4)})}), item.path), item.text)
        << item.stored;
  }
}

TEST(FindModelWarnings, Amounts_ShowInTheCurrencyOfTheReader) {
  constexpr const char* kIcu =
      "1 currency-of-reader: 'N' shows as an amount in the currency of each reader's locale, unconverted, on the ICU "
      "path\n";
  constexpr const char* kNarrow =
      "1 currency-of-reader: 'N' shows as an amount of dollars, without its sign, on the narrow path\n";
  const FormatCase cases[] = {
      {"%C%N%", RenderingPaths::kIcu, kIcu},       {"%C%N%", RenderingPaths::kBoth, kIcu},
      {"%C%N%", RenderingPaths::kNarrow, kNarrow}, {"%C%N% %C%N%", RenderingPaths::kIcu, kIcu},
      {"%P%N% %d%N%", RenderingPaths::kBoth, ""},  {"%c%N% %d%N%", RenderingPaths::kBoth, ""},
  };
  for (const FormatCase& item : cases) {
    EXPECT_EQ(found(model_of({entry(1, item.stored, {attribute("N", TypeSInt4)})}), item.path), item.text)
        << item.stored;
  }
  EXPECT_EQ(found(model_of({entry(1, "%C%N%", {attribute("N", TypeFloat)})}), RenderingPaths::kNarrow), kNarrow);
  // The number as well as the currency is another one.
  EXPECT_EQ(found(model_of({entry(1, "%C%N%", {attribute("N", TypeUInt4)})}), RenderingPaths::kNarrow),
            "1 negative-unsigned: values of 'N' above 2147483647 show as other numbers on the narrow path\n" +
                std::string(kNarrow));
}

TEST(FindModelWarnings, Booleans_AreNeverShown) {
  constexpr const char* kZero = "1 boolean-as-zero: the Bool 'N' shows as 0 on the ICU path, whatever its value\n";
  constexpr const char* kNarrowZero =
      "1 boolean-as-zero: the Bool 'N' shows as 0 on the narrow path, whatever its value\n";
  constexpr const char* kNothing =
      "1 boolean-as-zero: the Bool 'N' shows as nothing on the narrow path, whatever its value\n";
  const FormatCase cases[] = {
      {"%d%N%", RenderingPaths::kIcu, kZero},          {"%C%N%", RenderingPaths::kBoth, kZero},
      {"%d%N%", RenderingPaths::kNarrow, kNothing},    {"%u%N%", RenderingPaths::kNarrow, kNothing},
      {"%P%N%", RenderingPaths::kNarrow, kNarrowZero}, {"%x%N%", RenderingPaths::kBoth, ""},
  };
  for (const FormatCase& item : cases) {
    EXPECT_EQ(found(model_of({entry(1, item.stored, {attribute("N", TypeBool)})}), item.path), item.text)
        << item.stored;
  }
}

TEST(FindModelWarnings, TypeOfAReference_IsTheOwnAttributesBeforeTheGlobalOnes) {
  EXPECT_EQ(found(model_of({entry(1, "%d%N%")}, {attribute("N", TypeBool)}), RenderingPaths::kIcu),
            "1 boolean-as-zero: the Bool 'N' shows as 0 on the ICU path, whatever its value\n");
  EXPECT_EQ(found(model_of({entry(1, "%d%N%", {attribute("N", TypeUInt1)})}, {attribute("N", TypeBool)})),
            "1 hidden-global: the entry's attribute 'N' hides the global attribute of that name\n");
}

TEST(FindModelWarnings, EveryMessageOfAnEntry_IsLookedAt) {
  EntryDefinition item = entry(1, "plain%_%TIMESTAMP%", {attribute("N", TypeUInt4), attribute("K", TypeUInt1)});
  item.selector.attribute = "K";
  item.selector.messages.resize(2);
  item.selector.messages[0].message.stored = "%d%N%";
  item.selector.messages[1].message.stored = "and %d%N%";
  const std::string one =
      "1 negative-unsigned: values of 'N' above 2147483647 show as negative numbers on the ICU path\n";
  EXPECT_EQ(found(model_of({item})), one + one);
}

TEST(FindModelWarnings, AttributeInNoMessage_IsUnused) {
  EXPECT_EQ(found(model_of({entry(1, "%s%A%", {attribute("A", TypeChar32), attribute("B", TypeChar32)})})),
            "1 unused-attribute: the attribute 'B' is in no message of its entry and selects none\n");
}

TEST(FindModelWarnings, MessageAboveTheLimit_IsLong) {
  EXPECT_EQ(found(model_of({entry(1, std::string(65535, 'x'))})), "");
  EXPECT_EQ(found(model_of({entry(1, std::string(65536, 'x'))})),
            "1 long-message: the message takes 65536 bytes in the compiled file\n");
}

TEST(FindModelWarnings, ApostropheBeforeAReference_SwitchesItOffForIcu) {
  const DefinitionModel model = model_of({entry(1, "'%s%A%' and %s%A%' '%s%A%'", {attribute("A", TypeChar32)})});
  EXPECT_EQ(found(model),
            "1 quoted-placeholder: an apostrophe switches the reference to 'A' off on the ICU path, which shows its "
            "number in braces\n");
  EXPECT_EQ(found(model, RenderingPaths::kNarrow), "");
}

TEST(FindModelWarnings, TemplateThatNoEntryCanBeRenderedWith_IsBroken) {
  DefinitionModel model = model_of({entry(1, "%s%Nobody%")});
  EXPECT_EQ(found(model),
            "1 broken-template: no entry can be rendered with this template on the ICU path: unknown attribute "
            "'Nobody'\n");
  EXPECT_EQ(found(model, RenderingPaths::kNarrow),
            "1 broken-template: no entry can be rendered with this template on the narrow path: unknown attribute "
            "'Nobody'\n");
  model.entries[0].message.position = {1, 1};  // a text that the compiler lowered
  EXPECT_EQ(found(model), "");
  model.entries[0].message.raw = true;
  EXPECT_NE(found(model), "");
}

TEST(FindModelWarnings, AuxiliaryEntry_IsSeenTogetherWithTheStandardOne) {
  const DefinitionModel standard = model_of({entry(1, "%d%S% %s%A%", {attribute("S", TypeUInt4)})});
  EntryDefinition extension = entry(1, "", {attribute("A", TypeChar32), attribute("B", TypeChar32)});
  EXPECT_EQ(found(model_of({extension}), RenderingPaths::kBoth, &standard),
            "1 unused-attribute: the attribute 'B' is in no message of its entry and selects none\n");
  extension.message.stored = "%d%S% %s%A% %s%B%";
  EXPECT_EQ(found(model_of({extension}), RenderingPaths::kBoth, &standard),
            "1 negative-unsigned: values of 'S' above 2147483647 show as negative numbers on the ICU path\n");
}

TEST(FindModelWarnings, AuxiliaryMessageThatDoesNotCount_IsNotSeen) {
  const DefinitionModel standard = model_of({});
  EntryDefinition aux = entry(1, "%d%S%", {attribute("S", TypeUInt4)});
  EXPECT_EQ(found(model_of({aux}), RenderingPaths::kIcu, &standard),
            "1 negative-unsigned: values of 'S' above 2147483647 show as negative numbers on the ICU path\n");
  aux.message_id.clear();
  EXPECT_EQ(found(model_of({aux}), RenderingPaths::kIcu, &standard),
            "1 unused-attribute: the attribute 'S' is in no message of its entry and selects none\n");
}

TEST(FindModelWarnings, GlobalsOfOneFileAndAttributesOfTheOther_HideEachOther) {
  const DefinitionModel standard =
      model_of({entry(1, "%s%A%", {attribute("A", TypeChar32)})}, {attribute("G", TypeBool)});
  const DefinitionModel aux = model_of({entry(2, "%s%G%", {attribute("G", TypeChar32)})},
                                       {attribute("A", TypeChar32), attribute("H", TypeBool)});
  EXPECT_EQ(found(aux, RenderingPaths::kBoth, &standard),
            "file hidden-global: the standard entry 1 has an attribute 'A', which hides the global attribute of that "
            "name\n"
            "2 hidden-global: the entry's attribute 'G' hides the global attribute of that name\n");
}

TEST(FindModelWarnings, MoreEntriesTogetherThanTheLibraryKeeps_LoseTheirStandardHalf) {
  DefinitionModel standard;
  for (std::uint32_t id = 1; id <= 127; ++id) standard.entries.push_back(entry(id, "x%_%TIMESTAMP%"));
  DefinitionModel aux = model_of({entry(1000, "x%_%TIMESTAMP%"), entry(2, "x%_%TIMESTAMP%")});
  EXPECT_EQ(found(aux, RenderingPaths::kBoth, &standard), "");
  aux.entries.push_back(entry(1001, "x%_%TIMESTAMP%"));
  EXPECT_EQ(
      found(aux, RenderingPaths::kBoth, &standard),
      "file aux-shared-entries: 1 entry extends a standard one, and both files have 129 together; the library keeps "
      "128 in memory, and an extended one that it reads again lacks what the standard file defines\n");
  aux.entries.push_back(entry(127, "x%_%TIMESTAMP%"));
  aux.entries.push_back(entry(127, "listed twice%_%TIMESTAMP%"));
  EXPECT_EQ(
      found(aux, RenderingPaths::kBoth, &standard),
      "file aux-shared-entries: 2 entries extend standard ones, and both files have 129 together; the library keeps "
      "128 in memory, and an extended one that it reads again lacks what the standard file defines\n");
}

TEST(FindModelWarnings, EntriesOfOneFileEach_MayBeAsManyAsTheyAre) {
  DefinitionModel standard;
  for (std::uint32_t id = 1; id <= 200; ++id) standard.entries.push_back(entry(id, "x%_%TIMESTAMP%"));
  EXPECT_EQ(found(model_of({entry(201, "x%_%TIMESTAMP%")}), RenderingPaths::kBoth, &standard), "");
  EXPECT_EQ(found(standard), "");
}

TEST(FindModelWarnings, PositionOfAReference_IsThatOfItsPlaceholder) {
  DefinitionModel model = model_of({entry(1, "%s%A% %d%N%", {attribute("A", TypeChar32), attribute("N", TypeUInt4)})});
  MessageText& message = model.entries[0].message;
  message.written = "{A} {N}";
  message.position = {3, 1};
  message.references = {{3, 2}, {3, 6}};
  EXPECT_EQ(find_model_warnings(model, nullptr, RenderingPaths::kIcu).at(0).position, (SourcePosition{3, 6}));
  message.references.clear();
  EXPECT_EQ(find_model_warnings(model, nullptr, RenderingPaths::kIcu).at(0).position, (SourcePosition{3, 1}));
}

std::multiset<Rule> rules_of(const std::vector<ModelWarning>& warnings) {
  std::multiset<Rule> rules;
  for (const ModelWarning& warning : warnings) rules.insert(warning.rule);
  return rules;
}

TEST(FindModelWarnings, CompiledFile_GivesTheWarningsOfItsSource) {
  const CompileResult result = compile_source(
      "version: '1.0'\n"
      "globals: [{name: SITE, type: MBChar32}]\n"
      "entries:\n"
      "- {id: 1, name: A, message: '{N} {{ {B} }}', attributes: [{name: N, type: UInt4}, {name: B, type: Bool}]}\n"
      "- {id: 2, name: B, raw: \"'%s%SITE%\", attributes: [{name: SITE, type: Char32}, {name: K, type: UInt1}]}\n"
      "- {id: 3, name: C, raw: '%s%Nobody%'}\n",
      "f", {});
  ASSERT_TRUE(result.ok());
  const std::multiset<Rule> expected = {Rule::kNegativeUnsigned, Rule::kBooleanAsZero,   Rule::kQuotedPlaceholder,
                                        Rule::kHiddenGlobal,     Rule::kUnusedAttribute, Rule::kBrokenTemplate};
  const DefinitionModel compiled = read_ldf(result.bytes).model;
  EXPECT_EQ(rules_of(find_model_warnings(result.model, nullptr, RenderingPaths::kBoth)), expected);
  EXPECT_EQ(rules_of(find_model_warnings(compiled, nullptr, RenderingPaths::kBoth)), expected);
}

}  // namespace
}  // namespace qzlog_compiler
