// --since and --until around changes of the clocks, as Python's time zones have them.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

struct ZoneYear {
  const char* zone;
  int year;
};

void PrintTo(const ZoneYear& of, std::ostream* out) { *out << of.zone << ' ' << of.year; }

// Half an hour, a quarter past, at midnight and a minute behind it, four changes in a year, a day left out, the south.
constexpr ZoneYear kZones[] = {
    {"Europe/Berlin", 2022},       {"America/New_York", 2022}, {"America/Sao_Paulo", 2018}, {"America/Havana", 2022},
    {"America/St_Johns", 2010},    {"Africa/Cairo", 2014},     {"Africa/Casablanca", 2018}, {"Asia/Beirut", 2022},
    {"Australia/Lord_Howe", 2022}, {"Pacific/Apia", 2011},     {"Pacific/Chatham", 2022},   {"Asia/Tehran", 2021},
};

/// Writes a log around each change of a year's clocks (log.jsonl), pairs of times on those clocks (cases.txt), what is
/// between them (expected.txt), and all times of the log as the clocks show them (times.txt).
constexpr const char* kScript = R"py(
import datetime, json, sys
try:
    import zoneinfo
    zone, year = zoneinfo.ZoneInfo(sys.argv[1]), int(sys.argv[2])
except (ImportError, LookupError):
    sys.exit(77)
utc = datetime.timezone.utc
minutes = lambda count: datetime.timedelta(minutes=count)
def at(moment): return datetime.datetime.fromtimestamp(moment, zone)
def wall(moment, offset): return datetime.datetime.fromtimestamp(moment, utc).replace(tzinfo=None) + offset

hours = [int(datetime.datetime(year, 1, 1, tzinfo=utc).timestamp()) + 3600 * hour for hour in range(366 * 24)]
changes = []
for hour in hours:
    before = at(hour).utcoffset()
    if at(hour + 3600).utcoffset() != before:
        changes.append(next(m for m in range(hour, hour + 3601, 60) if at(m).utcoffset() != before))
assert len(changes) >= 2 or sys.argv[1] == "Pacific/Apia", changes

moments = sorted({change + step for change in changes for step in range(-30 * 3600, 30 * 3600 + 1, 900)} |
                 {change - 1 for change in changes})
with open("log.jsonl", "w") as log:
    for number, moment in enumerate(moments):
        time = datetime.datetime.fromtimestamp(moment, utc) if number % 2 else at(moment)
        text = time.isoformat().replace("+00:00", "Z")
        log.write(json.dumps({"id": 1, "time": text, "attributes": {"N": moment}}) + "\n")
with open("times.txt", "w") as times:
    for moment in moments: times.write(f"{at(moment).isoformat()} {moment}\n")

forms = ["%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d"]
texts = []
for change in changes:
    offsets = [at(change - 1).utcoffset(), at(change).utcoffset()]
    first = wall(change, min(offsets)) - minutes(90)
    last = wall(change, max(offsets)) + minutes(90)
    step = max((last - first) / 14, minutes(15))
    step = minutes(15) * int(step / minutes(15))
    own = [first + step * number for number in range(int((last - first) / step) + 1)]
    texts += [(change, time.strftime(forms[number % 4])) for number, time in enumerate(own)]
    texts += [(change, day) for day in sorted({time.strftime(forms[4]) for time in own})]
# Of a time that comes twice the first, of one that does not come as many seconds behind the change: so Python has them.
moment_of = lambda text: int(datetime.datetime.fromisoformat(text).replace(tzinfo=zone, fold=0).timestamp())
with open("cases.txt", "w") as cases, open("expected.txt", "w") as expected:
    for number, (change, since) in enumerate(texts):
        until = texts[(number + 5) % len(texts)][1]
        cases.write(f"{since}\t{until}\n")
        expected.write(f"{since} to {until}\n")
        for moment in moments:
            if moment_of(since) <= moment <= moment_of(until): expected.write(f"{moment}\n")
)py";

class RenderZones : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<ZoneYear> {
 protected:
  void SetUp() override {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: the years are before 2038}]\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    write("script.py", kScript);
    const CommandResult made = run("python3 script.py " + zone() + " " + std::to_string(GetParam().year));
    if (made.status == 127 || made.status == kUnknownZone) GTEST_SKIP() << "no python3 that knows the zone";
    ASSERT_EQ(made.status, 0) << made.err;
  }

  static constexpr int kUnknownZone = 77;

  static std::string zone() { return GetParam().zone; }
  /// What is chosen by each pair of times.
  std::string choose(const std::string& options) const {
    const CommandResult result =
        run("tab=$(printf '\\t')\n"
            "while IFS=$tab read -r since until; do\n"
            "  echo \"$since to $until\"\n"
            "  $QZLOG render --no-icu --definitions d.yaml " +
            options + " --since \"$since\" --until \"$until\" log.jsonl\ndone <cases.txt");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    return result.out;
  }
};

TEST_P(RenderZones, TimesAroundChangesOfTheReadersClock_AreThoseOfPython) {
  EXPECT_EQ(choose("--time-zone " + zone()), read("expected.txt"));
}

TEST_P(RenderZones, TimesAroundChangesOfTheProcesssClock_AreThoseOfPython) {
  const qz_test::SetEnv own_zone("TZ", zone());
  EXPECT_EQ(choose(""), read("expected.txt"));
}

TEST_P(RenderZones, ShownTimesAroundChanges_AreThoseOfPython) {
  const CommandResult result =
      run("$QZLOG render --definitions d.yaml --time-zone " + zone() + " --format '{time} {N}' log.jsonl");
  EXPECT_EQ(result.out, read("times.txt"));
  EXPECT_EQ(result.err, "");
}

// Seconds are read back to the second that was shown, whichever of two it is.
TEST_P(RenderZones, TimeThatIsShown_ChoosesItsEntry) {
  const CommandResult result =
      run("$QZLOG render --definitions d.yaml --time-zone " + zone() +
          " --format '{time}' log.jsonl | head -n 200 | awk 'NR % 20 == 1' | while read -r time; do\n"
          "  $QZLOG render --definitions d.yaml --time-zone " +
          zone() +
          " --format '{time}' --since \"$time\" --until \"$time\" log.jsonl | grep -cFx \"$time\"\n"
          "done | sort | uniq -c | tr -s ' '");
  EXPECT_EQ(result.out, " 10 1\n");
  EXPECT_EQ(result.err, "");
}

class RenderRelativeTimes : public qzlog_test::RenderFixture {};

TEST_F(RenderRelativeTimes, SpansAndDays_AreThoseBeforeThePresent) {
  ASSERT_EQ(run("for age in '40 years' '50 hours' '3 hours' '1 hour' '-50 hours' '-40 years'; do\n"
                "  echo \"{\\\"id\\\":1003,\\\"time\\\":\\\"$(date -u -d \"$age ago\" +%FT%TZ)\\\","
                "\\\"attributes\\\":{\\\"C\\\":\\\"$age\\\"}}\"\ndone >ages.jsonl")
                .status,
            0);
  const auto chosen = [this](const std::string& options) {
    return run("$QZLOG render --definitions storage.yaml --format '{C}' " + options + " ages.jsonl | paste -sd,").out;
  };
  EXPECT_EQ(chosen("--since -2h"), "1 hour,-50 hours,-40 years\n");
  EXPECT_EQ(chosen("--since -4h --until now"), "3 hours,1 hour\n");
  EXPECT_EQ(chosen("--since -3d --until -90m"), "50 hours,3 hours\n");
  EXPECT_EQ(chosen("--since -1w --until -1d"), "50 hours\n");
  EXPECT_EQ(chosen("--until yesterday"), "40 years,50 hours\n");
  EXPECT_EQ(chosen("--since -7200s --until now"), "1 hour\n");
  EXPECT_EQ(chosen("--level 0.. --where '@time > \"-2h\" and @time < \"now\"'"), "1 hour\n");
}

INSTANTIATE_TEST_SUITE_P(Zones, RenderZones, ::testing::ValuesIn(kZones), [](const auto& tested) {
  std::string name = tested.param.zone;
  for (char& character : name) {
    if (character == '/') character = '_';
  }
  return name;
});

}  // namespace
