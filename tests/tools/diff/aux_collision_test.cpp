#include "tools/diff/aux_collision.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/printed_findings.h"

namespace {

using qzlog_compiler::DiffRule;
using qzlog_compiler::RenderingPaths;
using qzlog_tool::check_aux_file;
using qzlog_tool::DefinitionFile;
using qzlog_tool::Definitions;
using qzlog_tool::find_aux_collisions;

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

Definitions read(const std::string& source) {
  Definitions definitions = qzlog_tool::read_definitions({"standard.yaml", "standard.yaml", source, true}, {});
  EXPECT_TRUE(definitions.ok());
  return definitions;
}

/// The auxiliary source as it stands, and compiled.
std::vector<DefinitionFile> both_forms(const std::string& source, const Definitions& standard) {
  const DefinitionFile as_source{"site.yaml", "site.yaml", source, true};
  const Definitions compiled = check_aux_file(as_source, standard, RenderingPaths::kBoth);
  EXPECT_TRUE(compiled.ok());
  return {as_source, {"site.ldf", "site.ldf", compiled.bytes, false}};
}

TEST(FindAuxCollisions, UnchangedStandard_HasNone) {
  const Definitions standard = read(kStandard);
  for (const DefinitionFile& aux : both_forms(kAux, standard)) {
    EXPECT_TRUE(check_aux_file(aux, standard, RenderingPaths::kBoth).ok());
    EXPECT_TRUE(find_aux_collisions(aux, standard, RenderingPaths::kBoth).empty());
  }
}

TEST(FindAuxCollisions, AddedAttribute_CollidesInItsEntry) {
  const Definitions changed = read(kStandard + kPool);
  const std::vector<DefinitionFile> forms = both_forms(kAux, read(kStandard));
  const std::string text =
      " error: the entry has the attribute 'Pool' in the standard definitions already [aux-attribute-exists]";
  const std::string texts[] = {"site.yaml:4:71:" + text, "site.ldf:" + text};
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const auto changes = find_aux_collisions(forms[i], changed, RenderingPaths::kBoth);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].rule, DiffRule::kAuxCollision);
    EXPECT_EQ(changes[0].place.new_entry, &changed.model.entries[0]);
    EXPECT_EQ(changes[0].after, texts[i]);
  }
}

TEST(FindAuxCollisions, AddedSelectorMessage_CollidesByIndexAndValue) {
  const std::string aux =
      "version: \"1.0\"\nentries:\n  - {id: 7, name: FULL, attributes: [{name: Reason, type: UInt2}], selector: "
      "{attribute: Reason, messages: [{index: 1, value: 1, id: c, text: d}]}}\n";
  const Definitions changed = read(kStandard + kSelector);
  for (const DefinitionFile& form : both_forms(aux, read(kStandard))) {
    EXPECT_EQ(find_aux_collisions(form, changed, RenderingPaths::kBoth).size(), 2U);
  }
}

TEST(FindAuxCollisions, RemovedAttribute_IsMissedByTheSourceOnly) {
  const std::string other = "version: \"2.5\"\nentries:\n  - {id: 7, name: FULL, message: full}\n";
  const Definitions changed = read(other);
  const std::vector<DefinitionFile> forms = both_forms(kAux, read(kStandard));
  EXPECT_EQ(find_aux_collisions(forms[0], changed, RenderingPaths::kBoth).size(), 1U);
  EXPECT_TRUE(find_aux_collisions(forms[1], changed, RenderingPaths::kBoth).empty());
}

TEST(CheckAuxFile, ConflictOfACompiledFile_NamesTheEntry) {
  const std::vector<DefinitionFile> forms = both_forms(kAux, read(kStandard));
  const Definitions checked = check_aux_file(forms[1], read(kStandard + kPool), RenderingPaths::kBoth);
  EXPECT_EQ(qzlog_compiler::printed(checked.diagnostics),
            "site.ldf: error: entry 7: the entry has the attribute 'Pool' in the standard definitions already "
            "[aux-attribute-exists]\n");
}

TEST(CheckAuxFile, DamagedFile_IsReported) {
  EXPECT_FALSE(check_aux_file({"site.ldf", "site.ldf", ".LDF", false}, read(kStandard), RenderingPaths::kBoth).ok());
}

}  // namespace
