// `qzlog stats` as users run it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/support.h"
#include "tests/tools/command_fixture.h"

namespace {

using qz_test::UnsetEnv;
using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;

constexpr const char* kDefinitions = R"yaml(version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - id: 1
    name: DISK_FULL
    message: full
    attributes:
      - {name: Name, type: MBChar2K}
      - {name: Free, type: SInt4}
      - {name: Load, type: Float}
      - {name: Flag, type: Bool}
  - id: 2
    name: DISK_OK
    message: ok
    attributes:
      - {name: Name, type: Char64}
)yaml";

constexpr const char* kEntries =
    R"({"writer":"a/1/x","seq":1,"id":1,"level":7,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":10}}
{"writer":"a/1/x","seq":2,"id":1,"level":7,"time":"2026-11-21T09:15:30Z","attributes":{"Name":"vol2","Free":-3}}
{"writer":"b/1/x","seq":1,"id":2,"level":3,"time":"2026-11-22T20:15:30Z","attributes":{"Name":"vol1"}}
{"writer":"b/1/x","seq":2,"lost":[{"id":1,"level":3,"count":5}]}
{"writer":"b/1/x","seq":3,"held":[{"id":1,"level":3,"count":1}]}
{"id":1,"attributes":{"Name":"vol1","Free":4,"Load":0.5}}
)";

/// The same counts by a plain script: what it is given stands for `--by` and `--of`, "-" for none.
constexpr const char* kScript = R"py(
import csv, json, sys, collections, math, zoneinfo, datetime
by, of, lines, made = sys.argv[1:5]
zone = zoneinfo.ZoneInfo("Asia/Kathmandu")
def moment(e):
    return datetime.datetime.fromisoformat(e["time"].replace("Z", "+00:00")).astimezone(zone) if "time" in e else None
def text(t):
    return t.isoformat(timespec="seconds") if t else ""
def key(e):
    t = moment(e)
    if by == "event": return str(e["id"])
    if by == "level": return str(e.get("level", 0))
    if by == "hour": return text(t.replace(minute=0, second=0)) if t else ""
    if by == "day": return t.date().isoformat() if t else ""
    if by == "writer": return e.get("writer", "")
    value = e.get("attributes", {}).get(by, "")
    return json.dumps(value) if isinstance(value, bool) else str(value)
groups = collections.defaultdict(list)
for line in open(lines, encoding="utf-8"):
    e = json.loads(line)
    if "id" in e: groups[key(e)].append(e)
total = sum(map(len, groups.values()))
rows = {row[next(iter(row))]: row for row in csv.DictReader(open(made, encoding="utf-8", newline=""))}
assert set(rows) == set(groups), (set(rows) ^ set(groups))
for name, entries in groups.items():
    row = rows[name]
    times = sorted(t for t in map(moment, entries) if t)
    assert int(row["count"]) == len(entries), row
    assert abs(float(row["share"]) - len(entries) / total) < 1e-6, row
    assert row["first"] == text(times[0] if times else None), (row, text(times[0]))
    assert row["last"] == text(times[-1] if times else None), row
    if of == "-": continue
    numbers = sorted(e["attributes"][of] for e in entries if of in e.get("attributes", {}))
    numbers = [n for n in numbers if not isinstance(n, str)]
    assert int(row["values"]) == len(numbers), row
    if not numbers: continue
    place = lambda percent: numbers[(len(numbers) * percent + 99) // 100 - 1]
    wanted = [numbers[0], place(50), place(99), numbers[-1]]
    assert [float(row[n]) for n in ("minimum", "median", "p99", "maximum")] == wanted, (row, wanted)
    assert math.isclose(float(row["mean"]), math.fsum(numbers) / len(numbers), rel_tol=1e-12, abs_tol=1e-9), row
)py";

class Stats : public CommandFixture {
 protected:
  Stats() {
    write("d.yaml", kDefinitions);
    write("entries.jsonl", kEntries);
    write("script.py", kScript);
  }

  CommandResult stats(const std::string& arguments) const {
    return run("$QZLOG stats --definitions d.yaml " + arguments);
  }

  /// Has Python count the same lines.
  void expect_as_script(const std::string& definitions, const std::string& lines, const std::string& by,
                        const std::string& of = "-") const {
    const std::string numbers = of == "-" ? "" : " --of " + of;
    const CommandResult made =
        run("$QZLOG stats --definitions " + definitions + " --by " + by + numbers + " --csv " + lines + " > made.csv");
    ASSERT_EQ(made.status, 0) << made.err;
    const CommandResult checked = run("python3 script.py " + by + " " + of + " " + lines + " made.csv");
    EXPECT_EQ(checked.status, 0) << by << ' ' << of << ": " << checked.err;
  }

  static bool has_python() { return std::system("python3 -c 'import zoneinfo' 2>/dev/null") == 0; }

  UnsetEnv no_columns_{"COLUMNS"};
};

TEST_F(Stats, Events_AreATableWithBars) {
  const CommandResult result = stats("entries.jsonl");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "   id  name       count    share  first seen        last seen\n"
            "    1  DISK_FULL      3   75.0 %  2026-11-21 14:00  2026-11-21 15:00  ██████████\n"
            "    2  DISK_OK        1   25.0 %  2026-11-23 02:00  2026-11-23 02:00  ███▍\n"
            "total                 4  100.0 %  2026-11-21 14:00  2026-11-23 02:00\n"
            "5 entries were lost\n"
            "1 entry was held back\n");
}

TEST_F(Stats, Days_AreThoseOfTheReadersClock) {
  EXPECT_EQ(stats("--by day --csv entries.jsonl").out,
            "day,count,share,first,last,kind\r\n"
            "2026-11-21,2,0.5,2026-11-21T14:00:30+05:45,2026-11-21T15:00:30+05:45,value\r\n"
            "2026-11-23,1,0.25,2026-11-23T02:00:30+05:45,2026-11-23T02:00:30+05:45,value\r\n"
            ",1,0.25,,,none\r\n");
  EXPECT_EQ(stats("--by day --utc --csv entries.jsonl").out,
            "day,count,share,first,last,kind\r\n"
            "2026-11-21,2,0.5,2026-11-21T08:15:30Z,2026-11-21T09:15:30Z,value\r\n"
            "2026-11-22,1,0.25,2026-11-22T20:15:30Z,2026-11-22T20:15:30Z,value\r\n"
            ",1,0.25,,,none\r\n");
}

// Where clocks are set back, the hour that comes twice is two.
TEST_F(Stats, HourThatComesTwice_IsTwo) {
  write("twice.jsonl", R"({"id":2,"time":"2026-10-25T00:30:00Z"}
{"id":2,"time":"2026-10-25T01:30:00Z"}
)");
  EXPECT_EQ(stats("--by hour --time-zone Europe/Berlin --csv twice.jsonl").out,
            "hour,count,share,first,last,kind\r\n"
            "2026-10-25T02:00:00+02:00,1,0.5,2026-10-25T02:30:00+02:00,2026-10-25T02:30:00+02:00,value\r\n"
            "2026-10-25T02:00:00+01:00,1,0.5,2026-10-25T02:30:00+01:00,2026-10-25T02:30:00+01:00,value\r\n");
}

TEST_F(Stats, Numbers_AreShownForEachGroup) {
  EXPECT_EQ(stats("--of Free entries.jsonl").out,
            "   id  name       count  values  minimum  median  99 %  maximum     mean\n"
            "    1  DISK_FULL      3       3       -3       4    10       10  3.66667  ██████\n"
            "    2  DISK_OK        1       0        -       -     -        -        -  ██\n"
            "total                 4       3       -3       4    10       10  3.66667\n"
            "5 entries were lost\n"
            "1 entry was held back\n");
}

TEST_F(Stats, Top_AddsUpTheRest) {
  EXPECT_EQ(stats("--by Name --top 1 --json entries.jsonl").out,
            "{\n"
            "  \"qzlog\": 1,\n"
            "  \"findings\": [],\n"
            "  \"by\": \"attribute\",\n"
            "  \"attribute\": \"Name\",\n"
            "  \"groups\": [\n"
            "    {\"value\": \"vol1\", \"count\": 3, \"share\": 0.75, \"first\": \"2026-11-21T14:00:30+05:45\", "
            "\"last\": \"2026-11-23T02:00:30+05:45\"}\n"
            "  ],\n"
            "  \"rest\": {\"count\": 1, \"share\": 0.25, \"first\": \"2026-11-21T15:00:30+05:45\", "
            "\"last\": \"2026-11-21T15:00:30+05:45\"},\n"
            "  \"total\": {\"count\": 4, \"share\": 1, \"first\": \"2026-11-21T14:00:30+05:45\", "
            "\"last\": \"2026-11-23T02:00:30+05:45\"},\n"
            "  \"lost\": 5,\n"
            "  \"held\": 1,\n"
            "  \"wrong\": 0\n"
            "}\n");
}

// An empty text, no text and what is added up have no key all three.
TEST_F(Stats, CsvRecordsWithoutAKey_AreToldApart) {
  write("keys.jsonl", R"({"id":2,"attributes":{"Name":""}}
{"id":2,"attributes":{"Name":""}}
{"id":2,"attributes":{"Name":""}}
{"id":2}
{"id":2}
{"id":2,"attributes":{"Name":"a"}}
)");
  EXPECT_EQ(stats("--by Name --top 2 --csv keys.jsonl").out,
            "value,count,share,first,last,kind\r\n"
            ",3,0.5,,,value\r\n"
            ",2,0.333333,,,none\r\n"
            ",1,0.166667,,,rest\r\n");
  EXPECT_EQ(stats("--by level --top 1 --of Free --csv entries.jsonl").out.substr(0, 80),
            "level,level_name,count,share,first,last,values,minimum,median,p99,maximum,mean,k");
}

TEST_F(Stats, LostEntries_AreCountedAsFarAsTheyAreWanted) {
  write("lost.jsonl", R"({"lost":[{"id":1,"level":3,"count":5},{"id":2,"level":9,"count":7}]})"
                      "\n");
  const std::string none =
      "   id  name  count  share  first seen  last seen\ntotal            0  0.0 %  -           -\n";
  EXPECT_EQ(stats("lost.jsonl").out, none + "12 entries were lost\n");
  EXPECT_EQ(stats("--id 1 lost.jsonl").out, none + "5 entries were lost\n");
  EXPECT_EQ(stats("--level 4.. lost.jsonl").out, none + "7 entries were lost\n");
  EXPECT_EQ(stats("--tail 3 --name DISK_OK lost.jsonl").out, none + "7 entries were lost\n");
  EXPECT_EQ(stats("--id 1 --where 'Free < 5' lost.jsonl").out, none + "5 entries were lost, whatever --where asks\n");
}

TEST_F(Stats, Choices_LeaveLinesOut) {
  EXPECT_EQ(stats("--where 'Free < 5' --csv entries.jsonl").out.substr(0, 67),
            "id,name,count,share,first,last,kind\r\n1,DISK_FULL,2,1,2026-11-21T15:");
  EXPECT_NE(stats("--tail 2 --json entries.jsonl").out.find("\"total\": {\"count\": 1,"), std::string::npos);
  EXPECT_NE(stats("--head 2 --json entries.jsonl").out.find("\"total\": {\"count\": 2,"), std::string::npos);
  const CommandResult since = stats("--since 2026-11-22 --json entries.jsonl");
  EXPECT_NE(since.out.find("\"total\": {\"count\": 1,"), std::string::npos) << since.out;
  EXPECT_EQ(since.err, "entries without a time, left out: 1\n");
}

TEST_F(Stats, LinesThatAreWrong_AreToldAndNotCounted) {
  write("wrong.jsonl", "{\"id\":2}\n{\"id\":9}\n");
  const CommandResult result = stats("--json wrong.jsonl missing.jsonl");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("wrong.jsonl:2:7: error: entry ID 9: "), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("cannot open 'missing.jsonl': No such file or directory\n"), std::string::npos);
  EXPECT_NE(result.out.find("\"line\":2,\"column\":7,\"severity\":\"error\",\"rule\":\"unknown-id\""),
            std::string::npos)
      << result.out;
  EXPECT_NE(result.out.find("\"wrong\": 1\n"), std::string::npos) << result.out;
  EXPECT_EQ(stats("wrong.jsonl").status, 1);
}

TEST_F(Stats, ValuesOfWideCharacters_AreAlignedAndFit) {
  write("wide.jsonl",
        "{\"id\":2,\"attributes\":{\"Name\":\"\u30C7\u30A3\u30B9\u30AF\"}}\n"
        "{\"id\":2,\"attributes\":{\"Name\":\"vol1\"}}\n");
  EXPECT_EQ(run("COLUMNS=60 $QZLOG stats --definitions d.yaml --by Name wide.jsonl").out,
            "Name      count    share  first seen  last seen\n"
            "vol1          1   50.0 %  -           -          ███████████\n"
            "\u30C7\u30A3\u30B9\u30AF      1   50.0 %  -           -          ███████████\n"
            "total         2  100.0 %  -           -\n");
}

TEST_F(Stats, NothingToCount_IsATableWithoutGroups) {
  write("empty.jsonl", "");
  const CommandResult result = stats("empty.jsonl");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "   id  name  count  share  first seen  last seen\ntotal            0  0.0 %  -           -\n");
  EXPECT_EQ(stats("--csv --of Free empty.jsonl").out,
            "id,name,count,share,first,last,values,minimum,median,p99,maximum,mean,kind\r\n");
}

TEST_F(Stats, WhatTheDefinitionsDoNotHave_IsRefusedWithASuggestion) {
  const CommandResult by = stats("--by Nam entries.jsonl");
  EXPECT_EQ(by.status, 2);
  EXPECT_EQ(by.err, "qzlog: error: --by: the definitions have no attribute 'Nam'; did you mean 'Name'?\n");
  EXPECT_EQ(stats("--by levl entries.jsonl").err,
            "qzlog: error: --by: the definitions have no attribute 'levl'; did you mean 'level'?\n");
  EXPECT_EQ(stats("--of Nmae entries.jsonl").err,
            "qzlog: error: --of: the definitions have no attribute 'Nmae'; did you mean 'Name'?\n");
  EXPECT_EQ(stats("--of Name entries.jsonl").err, "qzlog: error: --of: the attribute 'Name' has no numbers\n");
}

// Values that would command a terminal, break lines or fields.
TEST_F(Stats, HostileValues_StayInTheirPlaces) {
  const std::string wide(2000, 'x');
  write("hostile.jsonl",
        "{\"id\":2,\"attributes\":{\"Name\":\"\\u001b[31m,\\\"a\\\"\\r\\nb\"}}\n"
        "{\"id\":1,\"attributes\":{\"Name\":\"" +
            wide +
            "\"}}\n"
            "{\"id\":2,\"attributes\":{\"Name\":\"\"}}\n"
            "{\"id\":2}\n");
  const CommandResult table = stats("--by Name hostile.jsonl");
  EXPECT_EQ(table.out.find('\x1b'), std::string::npos);
  EXPECT_EQ(std::count(table.out.begin(), table.out.end(), '\n'), 6) << table.out;
  EXPECT_EQ(table.out.find(std::string(41, 'x')), std::string::npos);
  if (!has_python()) GTEST_SKIP() << "no python3";
  const CommandResult read =
      run("$QZLOG stats --definitions d.yaml --by Name --csv hostile.jsonl | python3 -c 'import csv, io, sys\n"
          "rows = list(csv.reader(io.TextIOWrapper(sys.stdin.buffer, newline=\"\")))\n"
          "print(len(rows), {len(row) for row in rows}, sorted(len(row[0]) for row in rows))'");
  EXPECT_EQ(read.out, "5 {6} [0, 0, 5, 14, 2000]\n") << read.err;
}

TEST_F(Stats, RandomLines_AreCountedAsByAPlainScript) {
  if (!has_python()) GTEST_SKIP() << "no python3";
  qz_test::SeededRandom random;
  std::string lines;
  for (int index = 0; index < 3000; ++index) {
    std::string line = R"({"writer":"h/)" + std::to_string(random.below(3)) + R"(/x","id":)";
    if (random.one_in(4)) line.replace(0, line.find("\"id\""), random.one_in(2) ? "{" : "{ ");
    const bool is_first = random.one_in(2);
    line += is_first ? "1" : "2";
    line += ",\"level\":" + std::to_string(random.below(10));
    if (!random.one_in(5)) {
      line += ",\"time\":\"2026-1" + std::to_string(random.below(2)) + "-0" + std::to_string(1 + random.below(9)) +
              "T1" + std::to_string(random.below(10)) + ":" + std::to_string(10 + random.below(50)) + ":07Z\"";
    }
    line += ",\"attributes\":{\"Name\":\"vol" + std::to_string(random.below(20)) + (random.one_in(9) ? "ä" : "") + '"';
    if (is_first) line += ",\"Free\":" + std::to_string(random.between(-50, 50));
    if (is_first && random.one_in(2)) line += ",\"Load\":" + std::to_string(random.between(0, 900)) + ".25";
    if (is_first && random.one_in(2)) line += random.one_in(2) ? ",\"Flag\":true" : ",\"Flag\":false";
    lines += line + "}}\n";
  }
  write("random.jsonl", lines);
  for (const char* const by : {"event", "level", "hour", "day", "writer", "Name", "Free", "Flag"}) {
    expect_as_script("d.yaml", "random.jsonl", by);
    expect_as_script("d.yaml", "random.jsonl", by, "Free");
    expect_as_script("d.yaml", "random.jsonl", by, "Load");
  }
}

TEST_F(Stats, Corpora_AreCountedAsByAPlainScript) {
  const std::filesystem::path corpora = QZLOG_CORPORA;
  if (!std::filesystem::is_directory(corpora)) GTEST_SKIP() << "no corpora in " << corpora;
  if (!has_python()) GTEST_SKIP() << "no python3";
  for (const char* const name : {"HDFS", "OpenSSH", "Mac", "OpenStack"}) {
    const std::string file = "'" + (corpora / name / name).string();
    for (const char* const by : {"event", "level", "hour", "day", "P1", "P2"}) {
      expect_as_script(file + ".yaml'", file + ".jsonl'", by);
    }
  }
}

TEST_F(Stats, SeveralDefinitions_AreTakenAsLinesNameThem) {
  write("other.yaml",
        "version: \"1.0\"\nentries:\n  - {id: 3, name: OTHER, message: o, attributes: [{name: Free, type: UInt1}]}\n");
  write("more.jsonl", std::string(kEntries) + R"({"id":3,"attributes":{"Free":9}})");
  const CommandResult result =
      run("$QZLOG stats --definitions d.yaml --definitions other.yaml --of Free --csv --where 'Free > 4' more.jsonl");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("DISK_FULL"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("OTHER"), std::string::npos) << result.out;
}

}  // namespace
