// Random templates, rendered by the library from a compiled file: the judge says yes exactly when it shows a message.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_exception.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/settings_test.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {
namespace {

const std::vector<AttributeDefinition> kAttributes = {{"Name", TypeChar32, "", {}},
                                                      {"Wide", TypeMBChar64, "", {}},
                                                      {"Count", TypeUInt4, "", {}},
                                                      {"Small", TypeSInt1, "", {}},
                                                      {"Share", TypeFloat, "", {}},
                                                      {"Day", TypeDate, "", {}},
                                                      {"When", TypeTimestamp, "", {}},

                                                      {"Key", TypeGUID, "", {}},
                                                      {"Größe", TypeUInt2, "", {}},
                                                      {"漢字の", TypeUInt2, "", {}},
                                                      {"Odd", TypeUnknown, "", {}},
                                                      {"Odder", static_cast<qz_AttributeType>(77), "", {}}};
const std::vector<AttributeDefinition> kGlobals = {{"PRODUCT_ID", TypeUInt4, "", {}},
                                                   {"COMPONENT_ID", TypeMBChar64, "", {}}};

std::optional<qz_AttributeType> find_type(std::string_view name) {
  for (const auto* const list : {&kAttributes, &kGlobals}) {
    if (const AttributeDefinition* const found = find_attribute(*list, name)) return found->type;
  }
  return std::nullopt;
}

/// Draws templates. What stands in messages of arguments can be reached: they are selected by small numbers and by
/// letters, not by a Boolean, which is 0 on the ICU path, and no attribute selects within what it has selected itself.
class RandomTemplates {
 public:
  explicit RandomTemplates(qz_test::SeededRandom& random) : random_(random) {}

  std::string draw() {
    text_.clear();
    names_.clear();
    has_unknown_formats_ = random_.one_in(3);
    const long long pieces = random_.one_in(20) ? random_.between(8, 14) : random_.between(1, 5);
    for (long long i = 0; i < pieces; ++i) add_piece();
    if (!random_.one_in(4)) add(random_.one_in(40) ? "%" : "%_%TIMESTAMP%");
    return text_;
  }

 private:
  template <std::size_t N>
  const char* any(const char* const (&choices)[N]) {
    return choices[random_.between(0, static_cast<long long>(N) - 1)];
  }

  /// References side by side read as an escape.
  void add(const std::string& piece) {
    if (piece.front() == '%' && text_.ends_with('%') && !random_.one_in(20)) text_ += ' ';
    text_ += piece;
  }

  void add_piece() {
    if (random_.one_in(2)) add_text();
    switch (random_.between(0, 5)) {
      case 0:
        return add(argument({}, 0));
      case 1:
        return add_text();
      default:
        return add(reference());
    }
  }

  void add_text() {
    constexpr const char* kPlain[] = {"text ", ", ", "é漢", "it''s", "#", "|", "'{'", "<", "100"};
    constexpr const char* kOdd[] = {"'", "{", "}", "%%", "''", "'{0}'", "{}", "{ 0 }", "%d", "% %", "\\"};
    add(random_.one_in(8) ? any(kOdd) : any(kPlain));
  }

  std::string reference() {
    constexpr const char* kFitting[] = {"s%Name",  "s%Wide",  "d%Count",     "u%Count", "d%Small",        "f%Share",
                                        "C%Share", "P%Small", "D%TIMESTAMP", "T%When",  "s%COMPONENT_ID", "u%Größe"};
    constexpr const char* kOdd[] = {"s%Key",       "d%Name",   "s%PRODUCT_ID", "s%VERSION_ID", "s%Nobody",
                                    "s%TIMESTAMP", "d%漢字の", "s%Odd",        "d%Odder",      "f%Count",
                                    "d",           "D%Share",  "d12%Count",    "s%",           "d%PRODUCT_ID"};
    constexpr const char* kUnknown[] = {"x%Name", "_%Odd", "S%PRODUCT_ID", "x%VERSION_ID", "é%Key", "_%漢字の"};
    if (has_unknown_formats_ && random_.one_in(3)) return '%' + std::string(any(kUnknown)) + '%';
    if (random_.one_in(30)) return '%' + std::string(any(kOdd)) + '%';
    // By times nothing is selected.
    const std::string drawn = any(kFitting);
    return '%' + (names_.insert(drawn.substr(2)).second ? drawn : "D%TIMESTAMP") + '%';
  }

  std::string argument(std::vector<long long> above, int depth) {
    const long long number = random_.between(0, 4);
    const bool is_above = std::find(above.begin(), above.end(), number) != above.end();
    if (is_above || depth == 2 || random_.one_in(2)) return simple(number);
    above.push_back(number);
    const auto message = [&] { return message_of(above, depth + 1); };
    const std::string begin = '{' + (number == 0 && random_.one_in(3) ? "name" : std::to_string(number));
    switch (random_.between(0, 3)) {
      case 0:
        return begin + ",choice,0#" + message() + "|1#" + message() + "|1<" + message() + '}';
      case 1:
        return begin + ",plural,=0{" + message() + "}=1{" + message() + "}other{" + message() + "}}";
      case 2:
        return begin + ",selectordinal,offset:1 =2{" + message() + "}other{" + message() + "}}";
      default:
        return begin + ", select, a{" + message() + "} b{" + message() + "} other{" + message() + "}}";
    }
  }

  std::string simple(long long number) {
    constexpr const char* kStyles[] = {"",         ",number",   ",date",       ",time,short",     ",spellout",
                                       ",ordinal", ",duration", ",number,#.#", ",number,percent", ",date,yyyy"};
    constexpr const char* kOdd[] = {",nonsense", ",number,0.0.0", ",number,::compact-short",
                                    ",date,jJ",  ",choice,",      ",plural,a{}"};
    const std::string name = number == 0 && random_.one_in(3) ? "name" : std::to_string(number);
    return '{' + name + (random_.one_in(15) ? any(kOdd) : any(kStyles)) + '}';
  }

  std::string message_of(const std::vector<long long>& above, int depth) {
    switch (random_.between(0, 3)) {
      case 0:
        return "x " + argument(above, depth) + " y";
      case 1:
        return "in " + reference() + " ";
      default:
        return "some text";
    }
  }

  qz_test::SeededRandom& random_;
  std::string text_;
  std::set<std::string> names_;  // those that may select
  bool has_unknown_formats_ = false;
};

void set_value(qz_LOG_LogEntry& entry, const AttributeDefinition& attribute, long long drawn) {
  constexpr const char* kTexts[] = {"a", "b", "x"};
  constexpr int kNumbers[] = {0, 1, 2, 5};
  const char* const name = attribute.name.c_str();
  const int number = kNumbers[drawn % 4];
  switch (attribute.type) {
    case TypeChar32:
      return entry.AddAttribStr(name, kTexts[drawn % 3]);
    case TypeMBChar64:
      return entry.AddAttribMBStr(name, kTexts[drawn % 3]);
    case TypeUInt2:
      return entry.AddAttrib2u(name, static_cast<unsigned short>(number));
    case TypeUInt4:
      return entry.AddAttrib4u(name, static_cast<unsigned>(number));
    case TypeSInt1:
      return entry.AddAttrib1(name, static_cast<char>(number));
    case TypeFloat:
      return entry.AddAttribFloat8(name, number);
    case TypeDate:
    case TypeTimestamp:
      return entry.AddAttribTime(name, qz_Time());
    default:
      return;  // nothing can be set
  }
}

class TemplateJudgeRandom : public qz_test::SettingsTest {
 protected:
  TemplateJudgeRandom() {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // ICU reads templates in the character set of the process
    qz_LOG_LogConfig::SetCodePage("UTF-8");
  }

  void load(const std::vector<std::string>& templates) const {
    DefinitionModel model;
    model.version = "1.0";
    model.globals = kGlobals;
    for (const std::string& text : templates) {
      EntryDefinition entry;
      entry.id = static_cast<std::uint32_t>(model.entries.size());
      entry.message_id = "M" + std::to_string(entry.id);
      entry.message.stored = text;
      entry.attributes = kAttributes;
      model.entries.push_back(std::move(entry));
    }
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("random.ldf", write_ldf(model)).c_str());
  }
};

/// Whether an entry shows its message, whatever its values are, and the library finds no mistake of its own.
bool renders(std::uint32_t id, qz_test::SeededRandom& random, int tries) try {
  static_cast<void>(::ftruncate(STDERR_FILENO, 0));
  qz_LOG_LogEntry entry(id, 3);
  for (int i = 0; i < tries; ++i) {
    entry.ClearAttribs();
    for (const auto* const list : {&kAttributes, &kGlobals}) {
      for (const AttributeDefinition& attribute : *list) set_value(entry, attribute, random.between(0, 11));
    }
    static_cast<void>(entry.FormatMessage());
  }
  return ::lseek(STDERR_FILENO, 0, SEEK_END) == 0;
} catch (const qz_EXCEPTION_base&) {
  return false;
}

/// What the library does with each template, in processes of its own: it may end them.
class LibraryAnswers {
 public:
  /// `tries`: how often each template is rendered, with other values each time.
  LibraryAnswers(std::size_t count, std::string errors, std::function<int(std::size_t)> tries)
      : count_(count), errors_(std::move(errors)), tries_(std::move(tries)) {}

  std::string ask() {
    while (answers_.size() < count_ && !testing::Test::HasFatalFailure()) ask_one_process();
    return answers_;
  }

 private:
  void ask_one_process() {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) answer_into(ends[1]);
    ::close(ends[1]);
    char answer = '\0';
    while (::read(ends[0], &answer, 1) == 1) answers_ += answer;
    ::close(ends[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << status;
    answers_ += 'n';
  }

  [[noreturn]] void answer_into(int out) const {
    const rlimit no_core{0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core);
    const int errors = ::open(errors_.c_str(), O_RDWR | O_CREAT | O_APPEND, 0600);
    if (errors < 0 || ::dup2(errors, STDERR_FILENO) < 0) ::_exit(1);
    qz_test::SeededRandom random;
    for (std::size_t i = answers_.size(); i < count_; ++i) {
      const char answer = renders(static_cast<std::uint32_t>(i), random, tries_(i)) ? 'y' : 'n';
      if (::write(out, &answer, 1) != 1) ::_exit(1);
    }
    ::_exit(0);
  }

  std::size_t count_;
  std::string errors_;
  std::function<int(std::size_t)> tries_;
  std::string answers_;
};

TEST_F(TemplateJudgeRandom, RandomTemplates_RenderExactlyWhereTheJudgeSaysSo) {
  qz_test::SeededRandom random;
  RandomTemplates drawn(random);
  std::vector<std::string> templates(static_cast<std::size_t>(qz_test::rounds(4000)));
  for (std::string& text : templates) text = drawn.draw();
  load(templates);
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    qz_LOG_LogConfig::SetICUEnabled(form == RenderingPath::kIcu);
    std::vector<TemplateJudgement> judged;
    for (const std::string& text : templates) judged.push_back(judge_template(text, form, find_type));
    // Few values lead to what fails with some values only.
    const auto tries = [&judged](std::size_t i) {
      const TemplateFinding* const failure = judged[i].failure();
      return failure != nullptr && failure->reason == TemplateReason::kInapplicablePattern ? 1500 : 20;
    };
    const std::string answers = LibraryAnswers(templates.size(), folder_.path() + "/errors", tries).ask();
    ASSERT_EQ(answers.size(), templates.size());
    int shown = 0;
    int inapplicable = 0;
    for (std::size_t i = 0; i < templates.size(); ++i) {
      const TemplateFinding* const failure = judged[i].failure();
      EXPECT_EQ(answers[i], failure == nullptr ? 'y' : 'n')
          << templates[i] << '\n'
          << (failure == nullptr ? "" : failure->text) << (form == RenderingPath::kIcu ? " (ICU)" : " (narrow)");
      if (failure == nullptr) {
        ++shown;
      } else if (failure->reason == TemplateReason::kInapplicablePattern) {
        ++inapplicable;
      }
    }
    EXPECT_GT(shown, qz_test::rounds(1000));
    EXPECT_EQ(inapplicable > qz_test::rounds(100), form == RenderingPath::kIcu) << inapplicable;
  }
}

}  // namespace
}  // namespace qzlog_compiler
