#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "tests/tools/manual/completion_fixture.h"
#include "tools/choice/choice_options.h"
#include "tools/manual/bash_completion.h"
#include "tools/manual/fish_completion.h"
#include "tools/manual/zsh_completion.h"

namespace {

/// Names out of the definitions that a line names, in each shell: of a command that has nothing but a choice, and asks
/// the command that was built.
class NameCompletion : public qzlog_test::CompletionFixture {
 protected:
  NameCompletion() {
    CLI::App app("", "qzlog");
    CLI::App* const command = app.add_subcommand("choose", "Chooses");
    std::string definitions;
    std::string auxiliary;
    qzlog_tool::ChoiceOptions options;
    command->add_option("--definitions", definitions, "Definitions")->type_name("STD.ldf|STD.yaml");
    command->add_option("--aux", auxiliary, "More")->type_name("AUX.ldf|AUX.yaml");
    add_choice_options(*command, options);
    std::string explained;
    command->add_option("ENTRY", explained, "What is explained")->type_name("ID|NAME|RULE");
    const qzlog_tool::CommandNode root = qzlog_tool::read_command_tree(app);
    for (const char* const folder : {"bin", "zsh"}) std::filesystem::create_directory(folder_.path(folder));
    std::filesystem::create_symlink(QZLOG_COMMAND, folder_.path("bin") + "/qzlog");
    write("choice.bash", bash_completion(root));
    write("choice.fish", fish_completion(root));
    write("zsh/_qzlog", zsh_completion(root));
    write(
        "disk.yaml",
        "version: \"1.0\"\nentries:\n  - {id: 1, name: DISK_FULL, message: x, attributes: [{name: Name, type: Char32}, "
        "{name: Number, type: UInt2}, {name: \"odd one\", type: UInt1}]}\n"
        "  - {id: 2, name: DISK_OK, message: x}\n");
    write("site.yaml",
          "version: \"1.0\"\nentries:\n  - {id: 3, name: SITE_UP, message: x, attributes: [{name: Nature, type: "
          "Bool}]}\n");
  }

  std::string in_bash(const std::string& words) const {
    return output_of(
        "PATH=$PWD/bin:$PATH bash -c 'source ./choice.bash; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _qzlog; "
        "printf \"%s\\n\" \"${COMPREPLY[@]}\" | sort -u | paste -s -d \"|\"' bash " +
        words);
  }
  std::string in_fish(const std::string& line) const {
    return output_of("PATH=$PWD/bin:$PATH HOME=$PWD fish --no-config -c 'source choice.fish; complete -C $argv[1]' \"" +
                     line + "\" | cut -f 1 | sort | paste -s -d '|'");
  }
  std::string in_zsh(const std::string& line) const {
    return output_of("PATH=$PWD/bin:$PATH zsh -f '" QZLOG_TESTS_TOOLS "/manual/complete.zsh' zsh \"" + line +
                     "\" | paste -s -d '|'");
  }
};

TEST_F(NameCompletion, Bash_OffersEventsAndAttributes) {
  EXPECT_EQ(in_bash("qzlog choose --definitions disk.yaml --name ''"), "DISK_FULL|DISK_OK\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions = disk.yaml --aux site.yaml --name = S"), "SITE_UP\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions disk.yaml --where N"), "Name|Number\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions disk.yaml --where \"'Name = 1 and (Nu\""), "Name = 1 and (Number\n");
  EXPECT_EQ(in_bash("qzlog choose --name ''"), "\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions - --name ''"), "\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions missing.yaml --name ''"), "\n");
}

TEST_F(NameCompletion, Fish_OffersEventsAndAttributes) {
  EXPECT_EQ(in_fish("qzlog choose --definitions disk.yaml --name "), "DISK_FULL|DISK_OK\n");
  EXPECT_EQ(in_fish("qzlog choose --definitions=disk.yaml --aux site.yaml --name S"), "SITE_UP\n");
  EXPECT_EQ(in_fish("qzlog choose --definitions disk.yaml --where N"), "Name|Number\n");
  EXPECT_EQ(in_fish("qzlog choose --definitions disk.yaml --where 'Name = 1 and (Nu"), "Name = 1 and (Number\n");
  EXPECT_EQ(in_fish("qzlog choose --name "), "\n");
  EXPECT_EQ(in_fish("qzlog choose --definitions missing.yaml --name "), "\n");
}

TEST_F(NameCompletion, Zsh_OffersEventsAndAttributes) {
  EXPECT_EQ(in_zsh("qzlog choose --definitions disk.yaml --name "),
            "DISK_FULL|DISK_OK|[qzlog choose --definitions disk.yaml --name DISK_]\n");
  EXPECT_EQ(in_zsh("qzlog choose --definitions=disk.yaml --aux site.yaml --name=S"),
            "SITE_UP|[qzlog choose --definitions=disk.yaml --aux site.yaml --name=SITE_UP ]\n");
  EXPECT_EQ(in_zsh("qzlog choose --definitions disk.yaml --where 'Name = 1 and (Nu"),
            "Number|[qzlog choose --definitions disk.yaml --where 'Name = 1 and (Number' ]\n");
  EXPECT_EQ(in_zsh("qzlog choose --name "), "[qzlog choose --name ]\n");
}

/// `qzlog explain` takes an event of definitions that the line names, else a rule.
TEST_F(NameCompletion, Explained_IsAnEventOfDefinitionsOrARule) {
  EXPECT_EQ(in_bash("qzlog choose unused-a"), "unused-accept|unused-attribute\n");
  EXPECT_EQ(in_bash("qzlog choose --definitions disk.yaml DISK_F"), "DISK_FULL\n");
  EXPECT_EQ(in_fish("qzlog choose unused-a"), "unused-accept|unused-attribute\n");
  EXPECT_EQ(in_fish("qzlog choose --definitions disk.yaml DISK_F"), "DISK_FULL\n");
  EXPECT_EQ(in_zsh("qzlog choose unused-at"), "unused-attribute|[qzlog choose unused-attribute ]\n");
  EXPECT_EQ(in_zsh("qzlog choose --definitions disk.yaml DISK_F"),
            "DISK_FULL|[qzlog choose --definitions disk.yaml DISK_FULL ]\n");
}

TEST_F(NameCompletion, CommandItself_PrintsNamesAndIsShownNowhere) {
  const auto names = run("'" QZLOG_COMMAND "' complete attributes disk.yaml site.yaml");
  EXPECT_EQ(names.out, "Name\nNature\nNumber\n");
  EXPECT_EQ(names.status, 0);
  EXPECT_EQ(run("'" QZLOG_COMMAND "' complete explained disk.yaml").out, "DISK_FULL\nDISK_OK\n");
  EXPECT_NE(run("'" QZLOG_COMMAND "' complete explained").out.find("\nunknown-key\nunknown-message\n"),
            std::string::npos);
  EXPECT_EQ(run("'" QZLOG_COMMAND "' complete events missing.yaml").status, 2);
  EXPECT_EQ(run("'" QZLOG_COMMAND "' complete others disk.yaml").status, 2);
  EXPECT_EQ(run("'" QZLOG_COMMAND "' --help").out.find("complete"), std::string::npos);
}

}  // namespace
