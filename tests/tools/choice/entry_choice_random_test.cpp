#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"
#include "tests/tools/choice/random_entries.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/reader_moment.h"

namespace {

using qz_test::RandomEntry;
using qz_test::RandomNumbers;
using qzlog_tool::ChoiceOptions;
using qzlog_tool::EntryChoice;

class EntryChoiceRandom : public qz_test::ChoiceTest {
 protected:
  struct Outcome {
    std::vector<unsigned long long> taken;
    unsigned long long refused = 0;
    unsigned long long without_time = 0;
  };

  Outcome choose(const ChoiceOptions& options, const std::string& lines, bool on_bytes) {
    EntryChoice choice(options, known_, qzlog_tool::process_clock(qz_test::kNow));
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(lines.data(), lines.size());
    if (on_bytes) reader.SetLineChoice(choice.line_choice());
    Outcome outcome;
    while (!choice.is_complete() && reader.Next(line_)) {
      if (choice.takes(line_)) outcome.taken.push_back(line_.GetLine());
    }
    EXPECT_EQ(reader.GetErrorCount(), 0u);
    outcome.refused = reader.GetRefusedCount();
    outcome.without_time = choice.without_time();
    return outcome;
  }
};

std::string moment_text(RandomNumbers& random) {
  return qzlog_tool::line_moment_text(qz_test::random_moment(random) + random.between(-1, 1));
}

ChoiceOptions random_options(RandomNumbers& random) {
  ChoiceOptions options;
  if (random.one_in(3)) options.since = moment_text(random);
  if (random.one_in(3)) options.until = moment_text(random);
  if (random.one_in(4)) options.ids = {random.one_in(2) ? "1" : "2..7"};
  if (random.one_in(4)) options.names = {random.one_in(2) ? "DISK_*" : "LINK_DOWN"};
  if (random.one_in(4)) options.level = random.one_in(2) ? "3..8" : "..5";
  if (random.one_in(4)) options.mask = random.one_in(2) ? "0xA" : "1";
  if (random.one_in(5)) options.writers = {random.one_in(2) ? "alpha/*" : "*/y"};
  if (random.one_in(4)) options.where = random.one_in(2) ? "Free < 5 or Name ~ 'a*'" : "missing(Pool) and @level > 2";
  if (random.one_in(6)) options.head = 1 + random.below(20);
  options.unique = random.one_in(5);
  return options;
}

/// What a line has to say for the options, but for --where, said anew.
bool is_wanted(const ChoiceOptions& options, const RandomEntry& entry) {
  const auto moment = [](const std::string& text) {
    return *qzlog_tool::find_moment(text, qzlog_tool::process_clock(0));
  };
  const bool needs_time = !options.since.empty() || !options.until.empty();
  if (needs_time && !entry.time) return false;
  if (!options.since.empty() && *entry.time < moment(options.since)) return false;
  if (!options.until.empty() && *entry.time > moment(options.until)) return false;
  if (!options.ids.empty() && (entry.id == 1) != (options.ids[0] == "1")) return false;
  if (!options.names.empty() && (entry.id == 3) != (options.names[0] == "LINK_DOWN")) return false;
  if (options.level == "3..8" && (entry.level < 3 || entry.level > 8)) return false;
  if (options.level == "..5" && entry.level > 5) return false;
  if (!options.mask.empty() && (entry.mask() & (options.mask == "1" ? 1U : 10U)) == 0) return false;
  return options.writers.empty() || entry.writer == (options.writers[0] == "*/y" ? "beta/2/y" : "alpha/1/x");
}

TEST_F(EntryChoiceRandom, ChoiceByBytes_TakesWhatTheChoiceByEntriesTakes) {
  qz_test::SeededRandom random;
  unsigned long long refused = 0;
  unsigned long long taken = 0;
  const int count = qz_test::rounds(1500);
  for (int round = 0; round < count; ++round) {
    const ChoiceOptions options = random_options(random);
    std::string lines;
    std::vector<unsigned long long> expected;
    std::set<std::pair<std::string, std::uint64_t>> seen;
    for (unsigned number = 1; number <= 30; ++number) {
      const RandomEntry entry = qz_test::random_entry(random);
      lines += (random.one_in(3) ? disguised_line(entry, random) : canonical_line(entry)) + "\n";
      if (!is_wanted(options, entry) || (options.head != 0 && expected.size() == options.head)) continue;
      if (options.unique && entry.seq && !seen.emplace(entry.writer, *entry.seq).second) continue;
      expected.push_back(number);
    }
    const Outcome by_entries = choose(options, lines, false);
    const Outcome by_bytes = choose(options, lines, true);
    ASSERT_EQ(by_bytes.taken, by_entries.taken) << lines;
    if (options.where.empty()) {
      ASSERT_EQ(by_entries.taken, expected) << lines;
    }
    ASSERT_EQ(by_bytes.without_time, by_entries.without_time) << lines;
    refused += by_bytes.refused;
    taken += by_bytes.taken.size();
  }
  EXPECT_GT(taken, static_cast<unsigned long long>(count) * 3);
  EXPECT_GT(refused, static_cast<unsigned long long>(count) * 8);
}

}  // namespace
