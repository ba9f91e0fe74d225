// Every form of output on values that are not kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "lines/json_text.h"
#include "tests/tools/shown/shown_fixture.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/shown/cell_text.h"
#include "tools/system/terminal_text.h"

namespace {

using qzlog_test::ShownFixture;
using qzlog_tool::ShownOptions;
using qzlog_tool::ShownPlace;

std::vector<std::string> hostile_texts() {
  return {"\033]0;owned\a\u009B2J\x7F",
          "two\nlines\r\nand\ra tab\t.",
          "\u202Egnp.exe\u202C \u2066x\u2069 \u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627",
          "\u2028\u2029\u0085",
          "a,b;\"c\",'d'\\",
          "=1+2",
          std::string(2048, 'w'),
          [] {
            std::string wide;
            for (int count = 0; count < 512; ++count) wide += "\u4E2De\u0301";
            return wide;
          }()};
}

std::string lines_with(const std::vector<std::string>& texts) {
  std::string lines;
  for (const std::string& text : texts) {
    lines += R"({"id":1001,"level":9,"time":"2026-11-21T08:15:29Z","attributes":{"Free":1,"Name":)";
    qzlog::append_json_text(text, lines);
    lines += "}}\n";
  }
  return lines;
}

ShownOptions options_for(const std::string& output) {
  ShownOptions options;
  if (output == "format") {
    options.format = "{time:>30} {level:<3}{Name:<20.30}|{message:^10}|{Name}";
  } else {
    options.output = output;
  }
  return options;
}

using Combination = std::tuple<const char*, std::size_t>;

class Hostile : public ShownFixture, public ::testing::WithParamInterface<Combination> {
 protected:
  static std::string output() { return std::get<0>(GetParam()); }
  static std::size_t columns() { return std::get<1>(GetParam()); }
  static ShownPlace place() { return {columns() > 0, columns()}; }
};

TEST_P(Hostile, Terminal_GetsNothingToObey) {
  std::string given;
  qzlog_tool::append_terminal_text(show(lines_with(hostile_texts()), options_for(output()), place()), given);
  for (std::size_t at = 0; at < given.size(); ++at) {
    const auto byte = static_cast<unsigned char>(given[at]);
    ASSERT_TRUE(byte >= 0x20 || byte == '\n' || byte == '\t' || (byte == '\r' && given.substr(at, 2) == "\r\n"));
    ASSERT_NE(byte, 0x7F);
  }
  EXPECT_TRUE(qzlog_compiler::is_utf8(given));
  EXPECT_EQ(given.find("\u202E"), std::string::npos);
  EXPECT_EQ(given.find("\u009B"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Outputs, Hostile,
    ::testing::Combine(::testing::Values("text", "short", "long", "json", "table", "csv", "format"),
                       ::testing::Values(std::size_t{0}, std::size_t{40}, std::size_t{200})),
    [](const auto& of) { return std::string(std::get<0>(of.param)) + std::to_string(std::get<1>(of.param)); });

TEST_F(ShownFixture, HostileTable_FitsTheTerminal) {
  for (const std::size_t columns : {1u, 20u, 40u, 200u}) {
    std::istringstream lines(show(lines_with(hostile_texts()), options_for("table"), {true, columns}));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(qzlog_tool::cell_columns(line), columns) << line;
  }
}

TEST_F(ShownFixture, HostileEntry_IsOneLine) {
  for (const char* const output : {"text", "short", "json", "format", "table"}) {
    for (const std::size_t columns : {0u, 40u}) {
      const ShownPlace place = {columns > 0, columns};
      const auto heading = show("", options_for(output), place);
      const std::vector<std::string> texts = hostile_texts();
      const std::string shown = show(lines_with(texts), options_for(output), place).substr(heading.size());
      EXPECT_EQ(static_cast<std::size_t>(std::count(shown.begin(), shown.end(), '\n')), texts.size()) << shown;
      EXPECT_EQ(shown.find('\r'), std::string::npos) << shown;
    }
  }
}

TEST_F(ShownFixture, HostileJson_ReadsBack) {
  for (const std::string& text : hostile_texts()) {
    for (const bool is_terminal : {false, true}) {
      std::string shown = show(lines_with({text}), options_for("json"));
      if (is_terminal)
        shown = [&] {
          std::string escaped;
          qzlog_tool::append_terminal_text(shown, escaped);
          return escaped;
        }();
      const auto json = nlohmann::json::parse(shown);
      EXPECT_EQ(json["attributes"]["Name"], text);
      EXPECT_EQ(json["level_name"], "alert");
      EXPECT_EQ(json["name"], "DISK_FULL");
      EXPECT_NE(std::string(json["message"]).find("blocks free"), std::string::npos);
    }
  }
}

// Line breaks in a text are two characters each once it is stored.
std::string as_stored(std::string text) {
  for (const auto& [from, to] : {std::pair("\n", "\\n"), std::pair("\r", "\\r")}) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) text.replace(at, 1, to);
  }
  return text;
}

TEST_F(ShownFixture, HostileCsv_IsReadBackByPython) {
  if (std::system("python3 -c 'import csv' 2>/dev/null") != 0) GTEST_SKIP() << "no python3";
  ShownOptions options = options_for("csv");
  options.columns = "id,Name,level_name,message";
  const qz_test::TempDir folder;
  folder.write("shown.csv", show(lines_with(hostile_texts()), options));
  nlohmann::json expected = {{"id", "Name", "level_name", "message"}};
  for (const std::string& text : hostile_texts()) {
    const std::string stored = as_stored(text);
    expected.push_back({"1001", stored, "alert", "Disk " + stored + " is full: 1 blocks free"});
  }
  folder.write("expected.json", expected.dump());
  const std::string command =
      "cd '" + folder.path() +
      "' && python3 -c 'import csv, json, sys\n"
      "rows = list(csv.reader(open(\"shown.csv\", newline=\"\", encoding=\"utf-8\"), strict=True))\n"
      "sys.exit(rows != json.load(open(\"expected.json\", encoding=\"utf-8\")))'";
  EXPECT_EQ(std::system(command.c_str()), 0) << folder.read("shown.csv");
}

}  // namespace
