#include "tools/manual/fish_completion.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/manual/completion_fixture.h"

namespace {

class FishCompletion : public qzlog_test::CompletionFixture {
 protected:
  /// What fish offers for the line, without the descriptions, sorted.
  std::string complete(const std::string& line) const {
    return output_of(
        "HOME=$PWD fish --no-config -c 'source $argv[1]; complete -C $argv[2]' \"$DOCS/fish/qzlog.fish\" '" + line +
        "' | cut -f 1 | sort | paste -s -d ' '");
  }
};

TEST_F(FishCompletion, Script_HasNoSyntaxError) {
  EXPECT_EQ(output_of("HOME=$PWD fish --no-config --no-execute \"$DOCS/fish/qzlog.fish\""), "");
}

TEST_F(FishCompletion, Lines_GetWhatFits) {
  const struct {
    const char* line;
    const char* offered;
  } rows[] = {
      {"qzlog com", "compile"},
      {"qzlog co", "compile count"},
      {"qzlog count s", "set show"},
      {"qzlog count show --ch", "--chart"},
      {"qzlog compile --pa", "--path"},
      {"qzlog compile --path ", "both icu narrow"},
      {"qzlog compile --path=n", "--path=narrow"},
      {"qzlog compile -o ", "events.ldf more/"},
      {"qzlog compile --output=ev", "--output=events.ldf"},
      {"qzlog compile ", "events.yaml more/"},
      {"qzlog render --locale de", "de_DE"},
      {"qzlog render --definitions ", "events.ldf events.yaml more/"},
      {"qzlog render --catalog ", "more/"},
      {"qzlog render --config n", "notes.txt"},
      {"qzlog catalog extract --update d", "de.po"},
      {"qzlog catalog extract --update de.po d", "de.po"},
      {"qzlog catalog extract --update=de.po fr.po d", "de.po"},
      {"qzlog catalog extract --update de.po fr.po ", "de.po events.yaml more/"},
      {"qzlog catalog extract --update de.po fr.po -o m.pot ", "events.yaml more/"},
      {"qzlog catalog extract --update de.po -- ", "events.yaml more/"},
      {"qzlog catalog build --po de.po fr.po d", "de.po disks.cnt"},
      {"qzlog catalog extract one.yaml ", "events.yaml more/"},
      {"qzlog render --code-page ", ""},
      {"qzlog render --code-page count ", "entries.jsonl more/"},
      {"qzlog render --follow entries.jsonl ", "entries.jsonl more/"},
  };
  for (const auto& row : rows) EXPECT_EQ(complete(row.line), std::string(row.offered) + "\n") << row.line;
}

TEST_F(FishCompletion, Offers_HaveDescriptions) {
  EXPECT_EQ(output_of("HOME=$PWD fish --no-config -c 'source $argv[1]; complete -C \"qzlog compile --pa\"' "
                      "\"$DOCS/fish/qzlog.fish\""),
            "--path\tRendering path that the texts have to come out right on\n");
}

}  // namespace
