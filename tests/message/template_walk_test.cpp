#include "message/template_walk.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "tests/support/seeded_random.h"

namespace qz_test {
namespace {

/// Writes down what it takes: a text as ~, an escape as %%, a format as <, a name as >, each with its places.
struct Writer {
  std::string_view text;
  std::string taken;

  std::optional<std::size_t> find_percent(std::size_t from) const {
    const std::size_t at = text.find('%', from);
    return at == std::string_view::npos ? std::nullopt : std::optional<std::size_t>(at);
  }
  bool is_percent(std::size_t at) const { return at < text.size() && text[at] == '%'; }
  void take_text(std::size_t begin, std::size_t end) {
    if (begin < end) take("~" + std::string(text.substr(begin, end - begin)), begin);
  }
  void take_escape(std::size_t percent) { take("%%", percent); }
  void take_format(std::size_t percent) {
    take("<" + std::string(percent + 1 < text.size() ? text.substr(percent + 1, 1) : "end"), percent);
  }
  void take_name(std::size_t begin, std::size_t end) {
    take(">" + std::string(text.substr(begin, end - begin)), begin);
  }
  void take(const std::string& part, std::size_t at) { taken += part + "@" + std::to_string(at) + " "; }
};

std::string walk(std::string_view text) {
  Writer writer{text, {}};
  const auto end = qzlog::walk_template<std::size_t>(writer);
  return writer.taken + std::to_string(end.start) + "," + std::to_string(end.position);
}

TEST(TemplateWalk, Parts_AreTakenInTheirOrder) {
  EXPECT_EQ(walk(""), "0,0");
  EXPECT_EQ(walk("text"), "0,0");
  EXPECT_EQ(walk("a %s%Name% b"), "~a @0 <s@2 >Name@5 10,10");
  EXPECT_EQ(walk("%s%A%, %d%B%"), "<s@0 >A@3 ~, @5 <d@7 >B@10 12,12");
}

TEST(TemplateWalk, Escape_DropsTheTextBeforeIt) {
  EXPECT_EQ(walk("50 %% of %s%A%"), "%%@3 ~ of @5 <s@9 >A@12 14,14");
  EXPECT_EQ(walk("%%%%"), "%%@0 %%@2 4,4");
  EXPECT_EQ(walk("%s%%%A%"), "<s@0 %%@2 >A@5 7,7") << "an escape between format and name";
}

TEST(TemplateWalk, EmptyName_IsNotTaken) { EXPECT_EQ(walk("%s%A%%%x"), "<s@0 %%@4 7,7"); }

TEST(TemplateWalk, OpenEnds_AreTakenAsFarAsTheyGo) {
  EXPECT_EQ(walk("%"), "<end@0 0,1");
  EXPECT_EQ(walk("a%s"), "~a@0 <s@1 0,2");
  EXPECT_EQ(walk("a%s%Name"), "~a@0 <s@1 4,4");
}

TEST(TemplateWalk, RandomTexts_EndBehindTheLastPercentSign) {
  SeededRandom random;
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (auto left = random.between(0, 12); left > 0; --left) text += "%%sA"[random.below(4)];
    Writer writer{text, {}};
    const auto end = qzlog::walk_template<std::size_t>(writer);
    ASSERT_EQ(end.position, text.rfind('%') + 1) << text;
    ASSERT_LE(end.start, end.position) << text;
  }
}

}  // namespace
}  // namespace qz_test
