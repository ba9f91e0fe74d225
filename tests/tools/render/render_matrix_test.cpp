// Every form of output with every choice, on values that are not kind: to a file as Python has them, and on a terminal
// of 40 columns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"
#include "tools/shown/cell_text.h"

namespace {

using qzlog_test::CommandResult;

constexpr unsigned short kColumns = 40;

/// The options of a choice, and what they leave of a list of entries, as a comprehension of Python says it.
struct Choice {
  const char* options;
  const char* left;
};

constexpr Choice kChoices[] = {
    {"", "every"},
    {"--since 2026-11-21T08:17:00Z", "[e for e in timed if e['time'] >= '2026-11-21T08:17:00Z']"},
    {"--until 2026-11-21T08:19:00Z", "[e for e in timed if e['time'] <= '2026-11-21T08:19:00Z']"},
    {"--id 1001 --level 3..", "[e for e in every if e['id'] == 1001 and e['level'] >= 3]"},
    {"--name 'DISK_?ONE' --unique", "[e for e in every if e['id'] == 1002]"},
    {"--mask 2", "[e for e in every if e['id'] == 1002]"},
    {"--writer 'a*/1/?'", "[e for e in every if e['seq'] % 2 == 0]"},
    {"--where 'Name ~ \"*\\\\n*\" or Free > 4'",
     "[e for e in every if '\\\\n' in stored(e['attributes']['Name']) or e['attributes'].get('Free', 0) > 4]"},
    {"--where 'not exists(Free)'", "[e for e in every if 'Free' not in e['attributes']]"},
    {"--head 3", "every[:3]"},
    {"--tail 4", "every[-4:]"},
    {"--tail 2 --level 1..7 --where 'Free >= 0' --utc",
     "[e for e in every if 1 <= e['level'] <= 7 and 'Free' in e['attributes']][-2:]"},
    {"--merge-by-time --head 9", "every[:9]"},
    {"--unique --follow", "every"},
    {"--level 9 --head 1 --since 2000-01-01 --where 'Free = 77'", "[]"},
};

constexpr const char* kOutputs[] = {
    "--output text",
    "--output short",
    "--output long",
    "--output json",
    "--output table --columns time,level,seq,id,Name,message",
    "--output csv --columns time,level_name,seq,id,name,Name,Free,writer,message",
    "--format '{time:>25} {level:^3}|{Name:<30.30}|{seq:>4} {message} {writer}'",
};

/// Reads entries.jsonl and checks what became of it: a form and a choice by their numbers, in the files
/// shown.FORM.CHOICE. Values are as they came there, but for line breaks, which are two characters each once they are
/// stored.
constexpr const char* kScript = R"py(
import csv, datetime, io, json, sys, zoneinfo
zone = zoneinfo.ZoneInfo("Asia/Kathmandu")
form = sys.argv[1]
every = [json.loads(line) for line in open("entries.jsonl", encoding="utf-8", newline="\n")]
timed = [e for e in every if "time" in e]
def stored(text): return text.replace("\n", "\\n").replace("\r", "\\r")
def name(e): return stored(e["attributes"]["Name"])
def free(e): return str(e["attributes"].get("Free", ""))
def event(e): return "DISK_FULL" if e["id"] == 1001 else "DISK_GONE"
def message(e):
    return f"Disk {name(e)} is full: {free(e)} blocks free" if e["id"] == 1001 else f"{name(e)}: Disk is gone"
def time(e, utc, none):
    if "time" not in e: return none
    moment = datetime.datetime.fromisoformat(e["time"].replace("Z", "+00:00"))
    return moment.strftime("%Y-%m-%dT%H:%M:%SZ") if utc else moment.astimezone(zone).isoformat()
def level(e):
    return ["debug", "debug", "info", "info", "notice", "warning", "warning", "error", "critical", "alert"][e["level"]]

def check_text(shown, left, utc):
    assert shown == "".join(message(e) + "\n" for e in left)
def check_short(shown, left, utc):
    assert shown == "".join(f"{time(e, utc, '-')} {level(e):<8} {event(e)} {message(e)}\n" for e in left)
def check_long(shown, left, utc):
    blocks = shown.split("\n\n")
    assert blocks.pop() == "" and len(blocks) == len(left), (len(blocks), len(left))
    for block, e in zip(blocks, left):
        lines = block.split("\n")
        assert lines[0] == f"{time(e, utc, '-')} {level(e)} {event(e)} ({e['id']})", lines[0]
        assert lines[1] == "  " + message(e), lines[1]
        assert all(line.startswith("  ") for line in lines[1:]), lines
        value = next(line for line in lines if line.startswith("  Name: "))
        assert value.startswith('  Name: "') and value.endswith('" (MBChar2K)'), value
        assert f"writer {e['writer']}, seq {e['seq']}, at " in lines[-1], lines[-1]
def check_json(shown, left, utc):
    lines = shown.split("\n")
    assert lines.pop() == "" and len(lines) == len(left)
    for line, e in zip(lines, left):
        made = json.loads(line)
        assert made.pop("level_name") == level(e) and made.pop("name") == event(e)
        assert made.pop("message") == message(e), (made, message(e))
        assert made == e, (made, e)
def check_table(shown, left, utc):
    lines = shown.split("\n")
    assert lines.pop() == "" and len(lines) == len(left) + 1, (len(lines), len(left))
    assert lines[0].split() == ["time", "level", "seq", "id", "Name", "message"], lines[0]
    for line, e in zip(lines[1:], left):
        assert line.split()[:4] == [time(e, utc, "-"), str(e["level"]), str(e["seq"]), str(e["id"])], line
def check_csv(shown, left, utc):
    rows = [[time(e, utc, ""), level(e), str(e["seq"]), str(e["id"]), event(e), name(e), free(e), e["writer"], message(e)]
            for e in left]
    rows.insert(0, "time,level_name,seq,id,name,Name,Free,writer,message".split(","))
    assert list(csv.reader(io.StringIO(shown, newline=""), strict=True)) == rows
def check_format(shown, left, utc):
    lines = shown.split("\n")
    assert lines.pop() == "" and len(lines) == len(left)
    for line, e in zip(lines, left):
        assert line.startswith(f"{time(e, utc, '-'):>25} {e['level']:^3}|"), line
        assert line.endswith(f"|{e['seq']:>4} {message(e)} {e['writer']}"), line

def __main__():
    checks = [check_text, check_short, check_long, check_json, check_table, check_csv, check_format]
    for number, (options, left) in enumerate(json.load(open("choices.json", encoding="utf-8"))):
        shown = open(f"shown.{form}.{number}", encoding="utf-8", newline="").read()
        left = eval(left)
        try: checks[int(form)](shown, left, "--utc" in options)
        except AssertionError as wrong:
            print(options, wrong.args, shown, sep="\n")
            raise
        # On a terminal there are as many lines, and JSON and CSV are still that.
        shown = open(f"terminal.{form}.{number}", encoding="utf-8", newline="").read()
        if form == "3": check_json(shown, left, "--utc" in options)
        elif form == "5":
            rows = list(csv.reader(io.StringIO(shown, newline=""), strict=True))
            assert len(rows) == len(left) + 1 and {len(row) for row in rows} == {9}, rows
        elif form != "2": assert shown.count("\n") == len(left) + (form == "4"), (options, shown)
__main__()
)py";

std::vector<std::string> hostile_texts() {
  return {"vol1",
          "\033]0;owned\a\u009B2J\x7F\033[31m",
          "two\nlines\r\nand\ra tab\t.",
          "\u202Egnp.exe\u202C \u2066x\u2069 \u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627",
          "\u2028\u2029\u0085\u200B\uFEFF",
          "a,b;\"c\",'d'\\ {Free} %Free%",
          "=1+2",
          std::string(2048, 'w'),
          [] {
            std::string wide;
            for (int count = 0; count < 512; ++count) wide += "\u4E2De\u0301";
            return wide;
          }()};
}

std::string entries() {
  std::string lines;
  std::size_t number = 0;
  for (const std::string& text : hostile_texts()) {
    for (const int id : {1001, 1002}) {
      nlohmann::ordered_json line = {
          {"writer", number % 2 == 0 ? "alpha/1/x" : "beta/1/x"},
          {"seq", number},
          {"id", id},
          {"level", number % 10},
      };
      if (number % 7 != 3) line["time"] = "2026-11-21T08:" + std::to_string(15 + number / 3) + ":30Z";
      line["attributes"]["Name"] = text;
      if (id == 1001) line["attributes"]["Free"] = number;
      lines += line.dump() + '\n';
      ++number;
    }
  }
  return lines;
}

class RenderMatrix : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<std::size_t> {
 protected:
  RenderMatrix() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n"
          "  - id: 1001\n    name: DISK_FULL\n    mask: 1\n    message: \"Disk {Name} is full: {Free} blocks free\"\n"
          "    attributes: [{name: Name, type: MBChar2K}, {name: Free, type: UInt4}]\n"
          "  - id: 1002\n    name: DISK_GONE\n    mask: 2\n    message: \"{Name}: Disk is gone\"\n"
          "    attributes: [{name: Name, type: MBChar2K}]\n");
    write("entries.jsonl", entries());
    write("script.py", kScript);
    nlohmann::json choices;
    for (const Choice& choice : kChoices) choices.push_back({choice.options, choice.left});
    write("choices.json", choices.dump());
  }

  static std::string command(const Choice& choice) {
    std::string options = choice.options;
    // The filter of the library says at the end what it let through.
    const bool is_filtered = options.find("--mask") != std::string::npos;
    return "$QZLOG render --definitions d.yaml " + options + " " + kOutputs[GetParam()] +
           (is_filtered                                     ? " entries.jsonl 2>filtered.txt"
            : options.find("--follow") != std::string::npos ? " <entries.jsonl"
                                                            : " entries.jsonl");
  }

  qz_test::SetEnv kind_of_terminal_{"TERM", "xterm"};
  qz_test::SetEnv no_color_{"NO_COLOR", "1"};
};

TEST_P(RenderMatrix, EveryChoiceOnHostileValues_IsAsPythonHasItAndSafeOnATerminal) {
  for (std::size_t number = 0; number < std::size(kChoices); ++number) {
    const Choice& choice = kChoices[number];
    const CommandResult to_file = run(command(choice));
    ASSERT_EQ(to_file.status, 0) << choice.options << to_file.err;
    const std::string place = std::to_string(GetParam()) + "." + std::to_string(number);
    write("shown." + place, to_file.out);
    auto [status, shown] = qzlog_test::run_on_terminal(folder_.path(), command(choice), kColumns);
    ASSERT_EQ(status, 0) << choice.options << shown;
    if (shown.starts_with("qzlog: --output table: ")) shown.erase(0, shown.find('\n') + 1);  // columns without room
    const std::string said = "entries without a time, left out: ";
    const std::size_t remark = shown.find(said);
    write("terminal." + place, shown.substr(0, remark));
    EXPECT_EQ(remark != std::string::npos, to_file.err.find(said) == 0) << choice.options;
    EXPECT_EQ(qzlog_test::first_unsafe_place(shown), "") << choice.options;
    if (std::string_view(kOutputs[GetParam()]).find("table") == std::string_view::npos) continue;
    std::istringstream lines(shown.substr(0, remark));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(qzlog_tool::cell_columns(line), kColumns) << line;
  }
  if (run("python3 -c 'import zoneinfo'").status != 0) GTEST_SKIP() << "no python3";
  const CommandResult checked = run("python3 script.py " + std::to_string(GetParam()));
  EXPECT_EQ(checked.status, 0) << checked.err << checked.out;
}

constexpr const char* kNames[] = {"Text", "Short", "Long", "Json", "Table", "Csv", "Format"};

INSTANTIATE_TEST_SUITE_P(Outputs, RenderMatrix, ::testing::Range<std::size_t>(0, std::size(kOutputs)),
                         [](const auto& of) { return std::string(kNames[of.param]); });

}  // namespace
