#include "tools/merge/definition_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "qzlog/file_sink.h"
#include "qzlog/logcfg.h"
#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/definitions.h"
#include "tools/report/library_text.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_compiler::RenderingPaths;
using qzlog_tool::DefinitionPaths;
using qzlog_tool::DefinitionSets;
using Texts = std::vector<std::string>;

constexpr const char* kTimeGlobals =
    "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n";

/// What a reader makes of lines, each with its message and as JSON, or with the rule of its error.
class LineTexts : public qz_LOG_LineErrorHandler {
 public:
  void TakeLineError(const qz_LOG_LineError& error) override {
    texts_.push_back(std::string(error.rule) + " " + error.text);
  }
  Texts read(const std::string& lines, qz_LOG_LineChoice* choice) {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(lines.data(), lines.size(), this);
    reader.SetLineChoice(choice);
    while (reader.Next(line_)) texts_.push_back(message(line_.GetEntry()) + " " + line_.GetEntry().ToJson());
    return std::move(texts_);
  }

 private:
  static std::string message(const qz_LOG_LogEntry& entry) try {
    return entry.FormatMessage();
  } catch (const qz_EXCEPTION_base& failure) {
    return qzlog::library_text(failure);
  }

  qz_LOG_EntryLine line_;
  Texts texts_;
};

class DefinitionSetsTest : public ::testing::Test {
 protected:
  DefinitionSetsTest() { qz_LOG_LogConfig::SetICUEnabled(false); }
  ~DefinitionSetsTest() override {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetICUEnabled(true);
  }

  DefinitionSets make(const std::vector<DefinitionPaths>& paths) {
    return DefinitionSets(
        paths, RenderingPaths::kNarrow, [this](const std::string& text) { warnings_.push_back(text); }, nullptr);
  }
  static std::string source(const std::string& entries, const std::string& globals = kTimeGlobals,
                            const std::string& version = "1.0") {
    return "version: \"" + version + "\"\n" + globals + "entries:\n" + entries;
  }
  static std::string line(const std::string& definitions, const std::string& rest) {
    return "{" + (definitions.empty() ? "" : R"("definitions":")" + definitions + "\",") + rest + "}\n";
  }
  static Texts read(DefinitionSets& sets, const std::string& lines) {
    qzlog_tool::LineDefinitions definitions(&sets, nullptr);
    return LineTexts().read(lines, definitions.line_choice());
  }

  qz_test::TempDir folder_;
  Texts warnings_;
};

TEST_F(DefinitionSetsTest, LinesThatAlternate_AreEachReadAgainstTheirDefinitions) {
  const std::string a = folder_.write(
      "a.yaml", source("  - {id: 1, name: A, message: \"a {N}\", attributes: [{name: N, type: UInt4}]}\n"));
  const std::string b = folder_.write(
      "b.yaml", source("  - {id: 1, name: B, message: \"b {N}\", attributes: [{name: N, type: Char32}]}\n"));
  DefinitionSets sets = make({{a, ""}, {b, ""}});
  const std::string of_a = line(sets.digest(0), R"("id":1,"level":0,"attributes":{"N":7})");
  const std::string of_b = line(sets.digest(1), R"("id":1,"level":0,"attributes":{"N":"x"})");
  const std::string named = line("", R"("id":"B","attributes":{"N":"y"})");
  EXPECT_EQ(read(sets, of_a + of_b + of_a + of_a + of_b + named),
            (Texts{R"(a 7 {"id":1,"level":0,"name":"A","attributes":{"N":7}})",
                   R"(b x {"id":1,"level":0,"name":"B","attributes":{"N":"x"}})",
                   R"(a 7 {"id":1,"level":0,"name":"A","attributes":{"N":7}})",
                   R"(a 7 {"id":1,"level":0,"name":"A","attributes":{"N":7}})",
                   R"(b x {"id":1,"level":0,"name":"B","attributes":{"N":"x"}})",
                   R"(b y {"id":1,"level":0,"name":"B","attributes":{"N":"y"}})"}));
  EXPECT_EQ(sets.switches(), 4U);
  EXPECT_EQ(warnings_, Texts{"lines name no definitions, and the ID 1 has several: the first that have their IDs are "
                             "used"});
}

TEST_F(DefinitionSetsTest, Digest_IsTheOneThatWritersOfLinesName) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  const std::string x = folder_.write("x.yaml", "version: \"1.0\"\nentries:\n  - {id: 2, name: X, message: x}\n");
  for (const std::string& auxiliary : {std::string(), x}) {
    DefinitionSets sets = make({{a, auxiliary}});
    qzlog_tool::load_definitions(a, auxiliary, RenderingPaths::kNarrow);
    qz_LOG_FileSinkSettings settings;
    settings.path = folder_.path("lines" + std::to_string(auxiliary.size()));
    qz_LOG_FileSink sink(settings);
    sink.Write(qz_LOG_LogEntry(1, 0));
    sink.Close(1000);
    const std::string written = qz_test::read_file(settings.path);
    EXPECT_NE(written.find(R"("definitions":")" + sets.digest(0) + '"'), std::string::npos) << written;
  }
}

TEST_F(DefinitionSetsTest, DefinitionsThatAreNotGiven_AreToldOnceAndTheFirstThatHaveTheIdAreUsed) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  const std::string b =
      folder_.write("b.yaml", source("  - {id: 1, name: A, message: b}\n  - {id: 2, name: B, message: b2}\n"));
  DefinitionSets sets = make({{a, ""}, {b, ""}});
  const std::string one = line("0123456789abcdef", R"("id":1,"level":0,"attributes":{})");
  const std::string two = line("0123456789abcdef", R"("id":2,"level":0,"attributes":{})");
  const std::string none = line(sets.digest(0), R"("id":2,"level":0,"attributes":{})");
  const Texts texts = read(sets, one + two + one + none + line("", R"("id":3)"));
  ASSERT_EQ(texts.size(), 5U);
  EXPECT_EQ(texts[0], R"(a {"id":1,"level":0,"name":"A","attributes":{}})");
  EXPECT_EQ(texts[1], R"(b2 {"id":2,"level":0,"name":"B","attributes":{}})");
  EXPECT_TRUE(texts[3].starts_with("unknown-id entry ID 2: ")) << texts[3];
  EXPECT_TRUE(texts[4].starts_with("unknown-id entry ID 3: ")) << texts[4];
  EXPECT_EQ(
      warnings_,
      Texts{
          "lines name the definitions 0123456789abcdef, which are not given: the first that have their IDs are used"});
}

TEST_F(DefinitionSetsTest, ComplaintsAboutDefinitions_HaveAnEnd) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  DefinitionSets sets = make({{a, ""}});
  for (int number = 1000; number < 2000; ++number)
    sets.use_for(line("0123456789ab" + std::to_string(number), R"("id":1,"level":0,"attributes":{})"));
  ASSERT_EQ(warnings_.size(), 101U);
  EXPECT_EQ(warnings_.back(), "of further definitions that lines name nothing is said");
}

// The reader says of such a line what is wrong with it.
TEST_F(DefinitionSetsTest, TextThatCannotNameDefinitions_IsNotRepeated) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  DefinitionSets sets = make({{a, ""}});
  for (const std::string& text : {std::string("a\\nqzlog: warning: \\u001b[31m"), std::string(100'000, 'x')}) {
    const Texts texts = read(sets, line(text, R"("id":1,"level":0,"attributes":{})"));
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_TRUE(texts[0].starts_with("bad-envelope 'definitions' has to be ")) << texts[0];
  }
  EXPECT_EQ(warnings_, Texts{});
}

TEST_F(DefinitionSetsTest, AuxiliaryFile_BelongsToItsStandardFile) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  const std::string x = folder_.write("x.yaml", "version: \"3.1\"\nentries:\n  - {id: 2, name: X, message: \"x\"}\n");
  DefinitionSets sets = make({{a, ""}, {a, x}});
  const std::string two = R"("id":2,"level":0,"attributes":{})";
  const Texts texts = read(sets, line(sets.digest(0), two) + line(sets.digest(1), two) + line("", two));
  ASSERT_EQ(texts.size(), 3U);
  EXPECT_TRUE(texts[0].starts_with("unknown-id ")) << texts[0];
  EXPECT_EQ(texts[1], R"(x {"id":2,"level":0,"name":"X","attributes":{}})");
  EXPECT_EQ(texts[2], texts[1]);
}

TEST_F(DefinitionSetsTest, AuxiliaryFileThatContradicts_IsRefused) {
  const std::string a =
      folder_.write("a.yaml", source("  - {id: 1, name: A, message: a, attributes: [{name: N, type: UInt4}]}\n"));
  const std::string x = folder_.write(
      "x.yaml", "version: \"1.0\"\nentries:\n  - {id: 1, name: A, attributes: [{name: N, type: Bool}]}\n");
  const auto compiled =
      qzlog_tool::read_definitions(qzlog_tool::read_definition_file(x), {.path = RenderingPaths::kNarrow});
  for (const std::string& auxiliary : {x, folder_.write("x.ldf", compiled.bytes)}) {
    testing::internal::CaptureStderr();
    EXPECT_THROW(make({{a, auxiliary}}), qzlog_tool::CommandError);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("error: "), std::string::npos);
  }
}

TEST_F(DefinitionSetsTest, DefinitionsThatDoNotContradictEachOther_AreLoadedTogether) {
  const std::string same = "  - {id: 1, name: A, message: a}\n";
  const std::string a = folder_.write("a.yaml", source(same + "  - {id: 2, name: B, message: b}\n"));
  for (const char* const globals : {kTimeGlobals, ""}) {
    const std::string b = folder_.write("b.yaml", source(same + "  - {id: 3, name: C, message: c}\n", globals, "2.0"));
    DefinitionSets sets = make({{a, ""}, {b, ""}});
    std::string lines;
    for (int round = 0; round < 10; ++round) {
      lines += line(sets.digest(0), R"("id":2,"level":0,"time":"2026-11-21T08:15:30Z","attributes":{})") +
               line(sets.digest(1), R"("id":3,"level":0,"attributes":{})");
    }
    EXPECT_EQ(read(sets, lines).size(), 20U);
    EXPECT_EQ(sets.switches(), 1U);
    // An entry that takes other global attributes is another one. The last two are for what is not known.
    EXPECT_EQ(sets.layer_count(), *globals != '\0' ? 3U : 4U);
  }
}

TEST_F(DefinitionSetsTest, LinesOfOneSetInARow_AreReadWithoutGoingOverToOthers) {
  const std::string a = folder_.write("a.yaml", source("  - {id: 1, name: A, message: a}\n"));
  const std::string b = folder_.write("b.yaml", source("  - {id: 1, name: A, message: b}\n"));
  DefinitionSets sets = make({{a, ""}, {b, ""}});
  std::string lines;
  for (std::size_t set : {0U, 1U}) {
    for (int round = 0; round < 100; ++round) lines += line(sets.digest(set), R"("id":1,"level":0,"attributes":{})");
  }
  EXPECT_EQ(read(sets, lines).size(), 200U);
  EXPECT_EQ(sets.switches(), 2U);
}

// ---- at random, against definitions that are loaded for each line ----

constexpr const char* kTypes[] = {"UInt1", "UInt4", "Bool", "Char32", "Float", "SInt2"};
constexpr const char* kValues[] = {"1", "300", "true", "\"x\"", "1.5", "-2"};
constexpr const char* kNames[] = {"N", "M", "P"};

template <std::size_t size>
std::string one_of(qz_test::SeededRandom& random, const char* const (&texts)[size]) {
  return texts[random.below(size)];
}

std::string random_attributes(qz_test::SeededRandom& random) {
  std::string all;
  for (const char* const name : kNames) {
    if (random.one_in(2))
      all += (all.empty() ? "" : ", ") + ("{name: " + std::string(name)) + ", type: " + one_of(random, kTypes) + "}";
  }
  return all;
}

std::string random_source(qz_test::SeededRandom& random) {
  std::string text = "version: \"" + std::to_string(random.below(3)) + ".0\"\n";
  const bool has_time = random.one_in(2);
  if (has_time) text += kTimeGlobals;
  if (random.one_in(3))
    text += (text.find("globals") == std::string::npos ? "globals:\n" : "") +
            ("  - {name: G, type: " + one_of(random, kTypes)) + "}\n";
  text += "entries:\n";
  for (int id = 1; id <= 5; ++id) {
    if (id > 1 && random.one_in(3)) continue;
    // Names go from event to event, but each is there once.
    text += "  - {id: " + std::to_string(id) + ", name: E" + std::to_string(random.one_in(4) ? id + 10 : id) +
            ", message: \"" +
            (has_time && random.one_in(3) ? "{TIMEZONE_DIFFERENCE}" : "m" + std::to_string(random.below(2))) +
            "\", attributes: [" + random_attributes(random) + "]}\n";
  }
  return text;
}

std::string random_rest(qz_test::SeededRandom& random) {
  const std::string id = std::to_string(1 + random.below(6));
  std::string rest =
      random.one_in(4) ? "\"id\":\"E" + std::string(random.one_in(4) ? "1" : "") + id + "\"" : "\"id\":" + id;
  rest += R"(,"level":2)";
  if (random.one_in(3)) rest += R"(,"time":"2026-11-21T08:15:30Z")";
  rest += R"(,"attributes":{)";
  bool is_first = true;
  for (const char* const name : {"N", "M", "P", "G", "DAYLIGHT_SAVING_ACTIVE"}) {
    if (!random.one_in(3)) continue;
    rest += (is_first ? "\"" : ",\"") + std::string(name) + "\":" + one_of(random, kValues);
    is_first = false;
  }
  return rest + "}";
}

TEST_F(DefinitionSetsTest, RandomSetsAndLines_AreReadAsIfTheirDefinitionsWereLoadedAlone) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 60; ++round) {
    std::vector<DefinitionPaths> paths;
    const std::size_t count = 1 + random.below(4);
    for (std::size_t set = 0; set < count; ++set) {
      paths.push_back({folder_.write("s" + std::to_string(set) + ".yaml", random_source(random)), ""});
    }
    DefinitionSets sets = make(paths);
    std::string lines;
    std::vector<std::pair<std::size_t, std::string>> alone;
    for (int number = 0; number < 60; ++number) {
      const std::size_t set = random.below(count);
      const std::size_t first =
          static_cast<std::size_t>(std::find(paths.begin(), paths.end(), paths[set]) - paths.begin());
      const std::string rest = random_rest(random);
      const bool is_behind = random.one_in(4);
      const std::string own =
          is_behind ? "{" + rest + R"(,"definitions" : ")" + sets.digest(set) + "\"}\n" : line(sets.digest(set), rest);
      lines += own;
      alone.emplace_back(first, own);
    }
    const Texts texts = read(sets, lines);
    ASSERT_EQ(texts.size(), alone.size());
    for (std::size_t at = 0; at < alone.size(); ++at) {
      qz_LOG_LogConfig::ClearDefinitions();
      qzlog_tool::load_definitions(paths[alone[at].first].standard, "", RenderingPaths::kNarrow);
      ASSERT_EQ(texts[at], LineTexts().read(alone[at].second, nullptr).front()) << alone[at].second;
    }
  }
}

}  // namespace
