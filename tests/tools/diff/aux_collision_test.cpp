#include "tools/diff/aux_collision.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace qzlog_compiler;

const std::string kStandard = R"(version: "2.5"
entries:
  - id: 7
    name: FULL
    message: "{Name}"
    attributes:
      - {name: Name, type: Char32}
      - {name: Reason, type: UInt2}
)";
const std::string kSelector = "    selector: {attribute: Reason, messages: [{index: 1, value: 1, id: a, text: b}]}\n";
const std::string kAux = R"(version: "1.0"
entries:
  - {id: 5, name: OWN, message: a}
  - {id: 7, name: FULL, message: "{Name} {Pool}", attributes: [{name: Pool, type: Char32}]}
)";
const std::string kPool = "      - {name: Pool, type: Char32}\n";

DefinitionModel model(const std::string& source) {
  CompileResult result = compile_source(source, "standard.yaml", {});
  EXPECT_TRUE(result.ok());
  return std::move(result.model);
}

/// The auxiliary source as it stands, and compiled.
std::vector<AuxFile> both_forms(const std::string& source, const DefinitionModel& standard) {
  const AuxFile as_source{source, "site.yaml"};
  CompileResult compiled = check_aux_file(as_source, standard, MessagePath::kBoth);
  EXPECT_TRUE(compiled.ok());
  return {as_source, {compiled.bytes, "site.ldf"}};
}

TEST(FindAuxCollisions, UnchangedStandard_HasNone) {
  const DefinitionModel standard = model(kStandard);
  for (const AuxFile& aux : both_forms(kAux, standard)) {
    EXPECT_TRUE(check_aux_file(aux, standard, MessagePath::kBoth).ok());
    EXPECT_TRUE(find_aux_collisions(aux, standard, MessagePath::kBoth).empty());
  }
}

TEST(FindAuxCollisions, AddedAttribute_CollidesInItsEntry) {
  const DefinitionModel changed = model(kStandard + kPool);
  const std::vector<AuxFile> forms = both_forms(kAux, model(kStandard));
  const std::string text =
      " error: the entry has the attribute 'Pool' in the standard definitions already [aux-attribute-exists]";
  const std::string texts[] = {"site.yaml:4:71:" + text, "site.ldf:" + text};
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const auto changes = find_aux_collisions(forms[i], changed, MessagePath::kBoth);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].rule, DiffRule::kAuxCollision);
    EXPECT_EQ(changes[0].place.new_entry, &changed.entries[0]);
    EXPECT_EQ(changes[0].after, texts[i]);
  }
}

TEST(FindAuxCollisions, AddedSelectorMessage_CollidesByIndexAndValue) {
  const std::string aux =
      "version: \"1.0\"\nentries:\n  - {id: 7, name: FULL, attributes: [{name: Reason, type: UInt2}], selector: "
      "{attribute: Reason, messages: [{index: 1, value: 1, id: c, text: d}]}}\n";
  const DefinitionModel changed = model(kStandard + kSelector);
  for (const AuxFile& form : both_forms(aux, model(kStandard))) {
    EXPECT_EQ(find_aux_collisions(form, changed, MessagePath::kBoth).size(), 2U);
  }
}

TEST(FindAuxCollisions, RemovedAttribute_IsMissedByTheSourceOnly) {
  const std::string other = "version: \"2.5\"\nentries:\n  - {id: 7, name: FULL, message: full}\n";
  const DefinitionModel changed = model(other);
  const std::vector<AuxFile> forms = both_forms(kAux, model(kStandard));
  EXPECT_EQ(find_aux_collisions(forms[0], changed, MessagePath::kBoth).size(), 1U);
  EXPECT_TRUE(find_aux_collisions(forms[1], changed, MessagePath::kBoth).empty());
}

TEST(CheckAuxFile, DamagedFile_IsReported) {
  EXPECT_FALSE(check_aux_file({".LDF", "site.ldf"}, model(kStandard), MessagePath::kBoth).ok());
}

}  // namespace
