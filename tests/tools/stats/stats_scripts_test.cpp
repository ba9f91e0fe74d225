// `qzlog stats` against plain scripts: jq on real logs, Python around changes of clocks.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

const std::filesystem::path kCorpora = QZLOG_CORPORA;

/// What groups have in common, as `--by` and as jq says it of an entry. Null is none.
struct Grouping {
  const char* by;
  const char* key;
  const char* own;  // of a group in the result
};

constexpr Grouping kGroupings[] = {
    {"event", ".id", ".id"},
    {"level", "(.level // 0)", ".level"},
    {"hour", "(if .time then .time[0:13] else null end)", "(if .hour then .hour[0:13] else null end)"},
    {"day", "(if .time then .time[0:10] else null end)", ".day"},
    {"writer", ".writer", ".writer"},
    {"P1", ".attributes.P1", ".value"},
    {"P3", ".attributes.P3", ".value"},
};

/// Options of a choice, and the same as jq says it of all entries.
struct Choice {
  const char* options;
  const char* filter;
};

constexpr Choice kChoices[] = {
    {"", "."},
    {"--level 2.. --head 300", "map(select(.level >= 2)) | .[:300]"},
    {"--where 'exists(P2) and @level < 9' --tail 500", "map(select(.attributes.P2 != null and .level < 9)) | .[-500:]"},
    {"--writer 'h/1/*'", "map(select(.writer == \"h/1/x\"))"},
    {"--id ..1020", "map(select(.id <= 1020))"},
    {"--unique --name 'E1*'", "map(select($names[.id | tostring] | startswith(\"E1\")))"},
};

/// Each group, of the values that look alike: its key as a text, whether that was none, how many, first, last, numbers
/// of an attribute.
constexpr const char* kPlain = R"jq(
def place(percent): if length == 0 then null else .[((length * percent + 99) / 100 | floor) - 1] end;
def second: if . == null then null else .[0:19] + "Z" end;
def text: if . == null then null else tostring end;
CHOICE | group_by(KEY | text) | map(
  (map(.time | values) | sort) as $times
  | (map(.attributes.OF | numbers) | sort) as $numbers
  | [(.[0] | KEY | text), length, ($times[0] | second), ($times[-1] | second),
     ($numbers | length, .[0], place(50), place(99), .[-1])])
| sort | .[]
)jq";

constexpr const char* kMade = R"jq(
.groups | map([(OWN | if . == null then null else tostring end), .count, .first, .last,
  (.numbers | .count, .minimum, .median, .p99, .maximum)]) | sort | .[]
)jq";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

class StatsOfCorpus : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    if (!std::filesystem::is_directory(kCorpora)) GTEST_SKIP() << "no corpora in " << kCorpora;
    if (run("jq --version").status != 0) GTEST_SKIP() << "no jq";
    const std::string file = "'" + (kCorpora / GetParam() / GetParam()).string();
    ASSERT_EQ(run("$QZLOG compile " + file + ".yaml' -o d.ldf").status, 0);
    // Some entries have a writer, some of those come twice.
    ASSERT_EQ(
        run("jq -c '[., input_line_number] as [$e, $n] | if $n % 5 == 0 then $e else {writer: \"h/\\($n % 3)/x\", "
            "seq: $n} + $e end' " +
            file + ".jsonl' >log.jsonl")
            .status,
        0);
    ASSERT_EQ(run("awk '/^  - id:/ {id = $3} /^    name:/ {print \"{\\\"\" id \"\\\":\\\"\" $2 \"\\\"}\"}' " + file +
                  ".yaml' | jq -s -c add >names.json")
                  .status,
              0);
  }

  void expect_as_jq(const Grouping& grouping, const Choice& choice, const std::string& of) const {
    write("plain.jq", replaced(replaced(replaced(kPlain, "CHOICE", choice.filter), "KEY", grouping.key), "OF", of));
    write("made.jq", replaced(kMade, "OWN", grouping.own));
    const CommandResult made = run("$QZLOG stats --definitions d.ldf --utc --json --by " + std::string(grouping.by) +
                                   " --of " + of + " " + choice.options + " log.jsonl | jq -c -f made.jq");
    const CommandResult plain = run("jq -s -c --argjson names \"$(cat names.json)\" -f plain.jq log.jsonl");
    ASSERT_EQ(plain.err, "");
    EXPECT_NE(plain.out, "");
    EXPECT_EQ(made.out, plain.out) << grouping.by << ' ' << choice.options << " of " << of;
    EXPECT_EQ(made.err, "") << grouping.by << ' ' << choice.options;
  }
};

TEST_P(StatsOfCorpus, GroupsAndNumbers_AreThoseOfJq) {
  for (const Grouping& grouping : kGroupings) expect_as_jq(grouping, kChoices[0], "P2");
}

TEST_P(StatsOfCorpus, GroupsOfChosenEntries_AreThoseOfJq) {
  for (const Choice& choice : kChoices) {
    expect_as_jq(kGroupings[0], choice, "P1");
    expect_as_jq(kGroupings[5], choice, "P3");
  }
}

TEST_P(StatsOfCorpus, Top_ShowsTheLargestGroupsAndAddsUpTheRest) {
  const CommandResult made =
      run("$QZLOG stats --definitions d.ldf --by P1 --top 3 --json log.jsonl >made.json\n"
          "jq -c '[.groups[].count], .rest.count, .total.count' made.json");
  const CommandResult plain =
      run("jq -s -c 'length as $all | group_by(.attributes.P1 | if . == null then null else tostring end) | "
          "map(length) | sort | reverse | .[:3], ($all - (.[:3] | "
          "add)), $all' log.jsonl");
  EXPECT_EQ(made.out, plain.out);
}

// What the command writes as CSV, as a table and as JSON says the same.
TEST_P(StatsOfCorpus, Forms_SayTheSame) {
  for (const char* const by : {"event", "writer", "P1"}) {
    const std::string command = "$QZLOG stats --definitions d.ldf --utc --by " + std::string(by);
    const std::string of_json = run(command + " --json log.jsonl | jq '[.groups[].count] | .[]'").out;
    EXPECT_NE(of_json, "");
    if (run("python3 -c 'import csv'").status != 0) GTEST_SKIP() << "no python3";
    EXPECT_EQ(run(command +
                  " --csv log.jsonl | python3 -c 'import csv, io, sys\n"
                  "for row in csv.DictReader(io.TextIOWrapper(sys.stdin.buffer, newline=\"\")): print(row[\"count\"])'")
                  .out,
              of_json);
    EXPECT_EQ(
        run(command + " log.jsonl | sed -e 1d -e '/^total /d' | grep -oE '[0-9]+ +[0-9.]+ %' | sed 's/ .*//'").out,
        of_json);
  }
}

INSTANTIATE_TEST_SUITE_P(Loghub, StatsOfCorpus, ::testing::Values("HDFS", "OpenSSH", "Mac", "OpenStack"),
                         [](const auto& of) { return std::string(of.param); });

struct ZoneYear {
  const char* zone;
  int year;
};

constexpr ZoneYear kZones[] = {
    {"Europe/Berlin", 2022}, {"America/St_Johns", 2010}, {"Australia/Lord_Howe", 2022}, {"Africa/Cairo", 2014},
    {"Asia/Beirut", 2022},   {"Pacific/Apia", 2011},     {"Pacific/Chatham", 2022},     {"America/Havana", 2022},
};

/// Writes a log of a year with entries around each change of the clocks, and what is in each hour and day of them.
constexpr const char* kScript = R"py(
import collections, datetime, json, sys
try:
    import zoneinfo
    zone, year = zoneinfo.ZoneInfo(sys.argv[1]), int(sys.argv[2])
except (ImportError, LookupError):
    sys.exit(77)
utc = datetime.timezone.utc
def at(moment): return datetime.datetime.fromtimestamp(moment, zone)
first = int(datetime.datetime(year, 1, 1, tzinfo=utc).timestamp())
hours = range(first, first + 366 * 86400, 3600)
changes = [hour for hour in hours if at(hour).utcoffset() != at(hour + 3600).utcoffset()]
moments = sorted({change + step for change in changes for step in range(-28 * 3600, 28 * 3600, 700)})
with open("log.jsonl", "w") as log:
    for moment in moments:
        time = datetime.datetime.fromtimestamp(moment, utc).strftime("%Y-%m-%dT%H:%M:%SZ")
        log.write('{"id":1,"level":3,"time":"%s"}\n' % time)
# An hour that clocks show twice is two. Where they change within one, what is behind the change begins with it.
def first_of_hour(moment):
    shown = at(moment)
    first = moment - 60 * shown.minute - shown.second
    while at(first).utcoffset() != shown.utcoffset(): first += 60
    return at(first).isoformat()
groups = {"hour": collections.Counter(), "day": collections.Counter()}
for moment in moments:
    groups["hour"][first_of_hour(moment)] += 1
    groups["day"][at(moment).date().isoformat()] += 1
for by, counts in groups.items():
    with open(by, "w") as out: out.writelines(f"{key},{count}\n" for key, count in sorted(counts.items()))
)py";

class StatsZones : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<ZoneYear> {};

TEST_P(StatsZones, HoursAndDaysAroundChanges_AreThoseOfPython) {
  write("d.yaml",
        "version: \"1.0\"\nglobals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n"
        "  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\nentries:\n  - {id: 1, name: N, message: n}\n");
  write("script.py", kScript);
  const std::string zone = GetParam().zone;
  const CommandResult made = run("python3 script.py " + zone + " " + std::to_string(GetParam().year));
  if (made.status == 127 || made.status == 77) GTEST_SKIP() << "no python3 that knows the zone";
  ASSERT_EQ(made.status, 0) << made.err;
  for (const std::string by : {"hour", "day"}) {
    const std::string rest = " --csv log.jsonl | sed -e 1d | cut -d, -f1,2 | LC_ALL=C sort";
    EXPECT_EQ(run("$QZLOG stats --definitions d.yaml --by " + by + " --time-zone " + zone + rest).out, read(by));
    const qz_test::SetEnv own_zone("TZ", zone);
    EXPECT_EQ(run("$QZLOG stats --definitions d.yaml --by " + by + rest).out, read(by));
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, StatsZones, ::testing::ValuesIn(kZones), [](const auto& tested) {
  std::string name = tested.param.zone;
  for (char& character : name) {
    if (character == '/') character = '_';
  }
  return name;
});

}  // namespace
