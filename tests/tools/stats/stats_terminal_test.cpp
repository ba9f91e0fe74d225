// `qzlog stats` on values that are not kind, on terminals of several widths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"
#include "tools/shown/cell_text.h"

namespace {

constexpr const char* kHostile[] = {
    "\033]0;owned\a\u009B2J\x7F",
    "two\nlines\r\nand\ta tab",
    "\u202Egnp.exe \u2066x \u05E9\u05DC",
    "\u2028\u2029\u0085",
    "a,b;\"c\"",
    "\u4E2De\u0301\u4E2D",
    "",
};

class StatsOnATerminal : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<const char*> {
 protected:
  StatsOnATerminal() {
    write("d.yaml",
          "version: \"1.0\"\nglobals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n"
          "  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\nentries:\n"
          "  - {id: 1, name: N, message: n, attributes: [{name: Name, type: MBChar2K}, {name: Free, type: UInt4}]}\n");
    std::string lines;
    unsigned number = 0;
    const auto add = [&](const std::string& value) {
      const nlohmann::ordered_json line = {{"writer", "h/" + std::to_string(number % 2) + "/x"},
                                           {"id", 1},
                                           {"level", number % 10},
                                           {"time", "2026-11-21T08:15:3" + std::to_string(number % 10) + "Z"},
                                           {"attributes", {{"Name", value}, {"Free", number * 1'000'000U}}}};
      lines += line.dump() + '\n';
      ++number;
    };
    for (const char* const value : kHostile) add(value);
    add(std::string(2048, 'w'));
    write("entries.jsonl", lines);
  }

  std::string on_terminal(const std::string& options, unsigned short columns) const {
    return qzlog_test::run_on_terminal(
               folder_.path(), "$QZLOG stats --definitions d.yaml " + options + " " + GetParam() + " entries.jsonl",
               columns)
        .shown;
  }

  qz_test::SetEnv kind_of_terminal_{"TERM", "xterm"};
};

TEST_P(StatsOnATerminal, EveryForm_HasNothingToObeyAndEachGroupOnItsLine) {
  for (const std::uint16_t columns : {std::uint16_t{40}, std::uint16_t{80}, std::uint16_t{200}}) {
    const std::string table = on_terminal("", columns);
    EXPECT_EQ(qzlog_test::first_unsafe_place(table), "") << table;
    EXPECT_EQ(table.find('\r'), std::string::npos) << table;
    const std::string json = on_terminal("--json", columns);
    EXPECT_EQ(qzlog_test::first_unsafe_place(json), "") << json;
    const auto made = nlohmann::json::parse(json);
    EXPECT_EQ(made["total"]["count"], 8);
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), static_cast<long>(made["groups"].size()) + 2) << table;
    const std::string csv = on_terminal("--csv", columns);
    EXPECT_EQ(qzlog_test::first_unsafe_place(csv), "") << csv;
  }
}

TEST_P(StatsOnATerminal, Table_FitsIt) {
  for (const std::uint16_t columns : {std::uint16_t{20}, std::uint16_t{40}, std::uint16_t{80}, std::uint16_t{200}}) {
    std::istringstream lines(on_terminal("", columns));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(qzlog_tool::cell_columns(line), columns) << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Choices, StatsOnATerminal,
                         ::testing::Values("--by Name", "--by Name --of Free", "--by level --where 'Free >= 0'",
                                           "--by writer --tail 100", "--by hour --utc",
                                           "--by event --of Free --level 0.."),
                         [](const auto& of) {
                           std::string name;
                           for (const char character : std::string(of.param)) {
                             if (std::isalnum(static_cast<unsigned char>(character)) != 0) name += character;
                           }
                           return name;
                         });

}  // namespace
