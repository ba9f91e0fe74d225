#include "tools/manual/zsh_completion.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/manual/completion_fixture.h"

namespace {

class ZshCompletion : public qzlog_test::CompletionFixture {
 protected:
  /// What zsh offers for the line, sorted, and the line after a press of the tab key in brackets.
  std::string complete(const std::string& line) const {
    return output_of("zsh -f '" QZLOG_TESTS_TOOLS "/manual/complete.zsh' \"$DOCS/zsh\" '" + line +
                     "' | paste -s -d ' '");
  }
};

TEST_F(ZshCompletion, Script_HasNoSyntaxError) { EXPECT_EQ(output_of("zsh -n \"$DOCS/zsh/_qzlog\""), ""); }

TEST_F(ZshCompletion, Lines_GetWhatFits) {
  const struct {
    const char* line;
    const char* offered;
  } rows[] = {
      {"qzlog com", "compile [qzlog compile ]"},
      {"qzlog count s", "set show [qzlog count s]"},
      {"qzlog count sh", "show [qzlog count show ]"},
      {"qzlog compile --pa", "--path [qzlog compile --path=]"},
      {"qzlog compile --path ", "both icu narrow [qzlog compile --path ]"},
      {"qzlog compile --path=i", "icu [qzlog compile --path=icu ]"},
      {"qzlog compile ", "events.yaml more [qzlog compile ]"},
      {"qzlog compile -o ", "events.ldf more [qzlog compile -o ]"},
      {"qzlog render --definitions e", "events.ldf events.yaml [qzlog render --definitions events.]"},
      {"qzlog render --locale de", "de_DE [qzlog render --locale de_DE ]"},
      {"qzlog render --catalog ", "more [qzlog render --catalog more/]"},
      {"qzlog render --code-page count ", "entries.jsonl more [qzlog render --code-page count ]"},
      {"qzlog catalog extract --update d", "de.po [qzlog catalog extract --update de.po ]"},
      {"qzlog catalog extract --update de.po ", "de.po events.yaml more [qzlog catalog extract --update de.po ]"},
      {"qzlog catalog extract --update de.po fr.po ",
       "de.po events.yaml more [qzlog catalog extract --update de.po fr.po ]"},
      {"qzlog catalog extract --update=de.po fr.po ",
       "de.po events.yaml more [qzlog catalog extract --update=de.po fr.po ]"},
      {"qzlog catalog extract --update de.po fr.po --ou",
       "--output [qzlog catalog extract --update de.po fr.po --output=]"},
      {"qzlog catalog extract --update de.po -o m.pot ",
       "events.yaml more [qzlog catalog extract --update de.po -o m.pot ]"},
      {"qzlog catalog extract --update de.po fr.po -- ",
       "events.yaml more [qzlog catalog extract --update de.po fr.po -- ]"},
      {"qzlog catalog extract --update=de.po -- ", "events.yaml more [qzlog catalog extract --update=de.po -- ]"},
      {"qzlog catalog build --po de.po fr.po n", "notes.txt [qzlog catalog build --po de.po fr.po notes.txt ]"},
      {"qzlog catalog extract --update de.po --ou", "--output [qzlog catalog extract --update de.po --output=]"},
      {"qzlog catalog extract one.yaml ", "events.yaml more [qzlog catalog extract one.yaml ]"},
      {"qzlog count show --json --ch", "[qzlog count show --json --ch]"},  // the two exclude each other
  };
  for (const auto& row : rows) EXPECT_EQ(complete(row.line), std::string(row.offered) + "\n") << row.line;
}

}  // namespace
