#include "tools/manual/bash_completion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/manual/completion_fixture.h"

namespace {

class BashCompletion : public qzlog_test::CompletionFixture {
 protected:
  /// What bash would offer for the last of the words, sorted.
  std::string complete(const std::string& words) const {
    return output_of(
        "bash -c 'source \"$1\"; shift; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _qzlog && "
        "printf \"%s\\n\" \"${COMPREPLY[@]}\" | sort -u | paste -s -d \" \"' bash \"$DOCS/bash/qzlog\" " +
        words);
  }
};

TEST_F(BashCompletion, Script_HasNoSyntaxError) { EXPECT_EQ(output_of("bash -n \"$DOCS/bash/qzlog\""), ""); }

TEST_F(BashCompletion, LinesOfWords_GetWhatFits) {
  const struct {
    const char* words;
    const char* offered;
  } rows[] = {
      {"qzlog com", "compile"},
      {"qzlog co", "compile count"},
      {"qzlog nothing", ""},
      {"qzlog --v", "--version"},
      {"qzlog count ''", "add collect delete merge set show"},
      {"qzlog count s", "set show"},
      {"qzlog compile --pa", "--path"},
      {"qzlog compile --path ''", "both icu narrow"},
      {"qzlog compile --path n", "narrow"},
      {"qzlog compile --path = i", "icu"},
      {"qzlog compile --path =", "both icu narrow"},
      {"qzlog compile --path icu ''", "events.yaml more"},
      {"qzlog compile -o ''", "events.ldf more"},
      {"qzlog compile -o out.ldf e", "events.yaml"},
      {"qzlog compile -- --p", ""},
      {"qzlog compile events.yaml ''", ""},
      {"qzlog render --locale de", "de_DE"},
      {"qzlog render --definitions ''", "events.ldf events.yaml more"},
      {"qzlog render --catalog ''", "more"},
      {"qzlog render --code-page ''", ""},
      {"qzlog render --level-low 1 --definitions e", "events.ldf events.yaml"},
      {"qzlog render --config n", "notes.txt"},
      {"qzlog render ''", "entries.jsonl more"},
      {"qzlog render entries.jsonl ''", "entries.jsonl more"},
      {"qzlog render --follow ''", "entries.jsonl more"},
      {"qzlog render --ch", "--check-gaps"},
      {"qzlog count show ''", "disks.cnt more"},
      {"qzlog count show --ch", "--chart"},
      {"qzlog compile -o - ''", "events.yaml more"},
      {"qzlog catalog extract --update ''", "de.po more"},
      {"qzlog catalog extract --update de.po fr.po d", "de.po"},
      {"qzlog catalog extract --update = de.po d", "de.po"},
      {"qzlog catalog extract --update de.po e", "events.yaml"},
      {"qzlog catalog extract --update de.po -- ''", "events.yaml more"},
      {"qzlog catalog build --po d", "de.po disks.cnt"},
      {"qzlog catalog build --po de.po d", "de.po disks.cnt"},
      {"qzlog diff --aux events.yaml g", ""},
      {"qzlog catalog extract --update de.po -", "--help --output --quiet --update -h -o"},
      {"qzlog catalog extract --update de.po -o out.pot ''", "events.yaml more"},
      {"qzlog catalog extract one.yaml two.yaml ''", "events.yaml more"},
      // The value of an option is no command, and what follows a command's argument neither.
      {"qzlog render --code-page count ''", "entries.jsonl more"},
  };
  for (const auto& row : rows) EXPECT_EQ(complete(row.words), std::string(row.offered) + "\n") << row.words;
}

TEST_F(BashCompletion, EveryOptionOfEveryCommand_IsOffered) {
  EXPECT_EQ(complete("qzlog count delete -"), "--date --definitions --from --help --key --quiet --to -h\n");
}

TEST_F(BashCompletion, FileNamesWithBlanks_AreOneOffer) {
  write("two words.yaml", "");
  EXPECT_EQ(complete("qzlog compile two"), "two words.yaml\n");
}

}  // namespace
