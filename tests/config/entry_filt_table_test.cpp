#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "qzlog/entry_filt.h"
#include "tests/config/entry_filt_fixture.h"

namespace {

using namespace qz_test;

constexpr std::array<const char*, 6> kKeys = {"DebugEnabled", "PropertyMask",     "LogLevelLow",
                                              "LogLevelHigh", "DebugLogLevelLow", "DebugLogLevelHigh"};

using Section = std::map<std::string, unsigned>;

/// A configuration as an administrator sees it: two sections of keys, or no source at all.
struct Configuration {
  bool exists = false;
  Section app = {};
  Section global = {};

  std::optional<unsigned> value(const std::string& key) const {
    if (!exists) return std::nullopt;
    if (app.count(key) != 0) return app.at(key);
    if (global.count(key) != 0) return global.at(key);
    return std::nullopt;
  }

  std::string text() const {
    std::string lines = "[app]\n";
    for (const auto& [key, value] : app) lines += key + "=" + std::to_string(value) + "\n";
    lines += "[global]\n";
    for (const auto& [key, value] : global) lines += key + "=" + std::to_string(value) + "\n";
    return lines;
  }
};

enum class Callback { kNone, kYes, kNo };

/// One line of the decision table.
struct Question {
  unsigned id;
  unsigned entry_mask;
  unsigned level;
  Callback callback;
  unsigned filter_mask;
  unsigned filter_low;
  unsigned filter_high;
};

struct Decision {
  bool passes;
  bool debug_entry;
  bool debug_enabled;
  int callback_calls;
};

bool shares_a_bit(unsigned left, unsigned right) {
  for (int bit = 0; bit < 32; ++bit) {
    if ((left >> bit) % 2 == 1 && (right >> bit) % 2 == 1) return true;
  }
  return false;
}

/// The rules, slowly and one by one.
Decision decide(const Configuration& configuration, const Question& question) {
  Decision decision = {false, (question.entry_mask >> 26) % 2 == 1, false, 0};
  if (const auto enabled = configuration.value("DebugEnabled")) decision.debug_enabled = *enabled != 0;
  const bool bypass = decision.debug_entry && decision.debug_enabled;

  bool callback_passes = true;
  if (!bypass && question.callback != Callback::kNone) {
    decision.callback_calls = 1;
    callback_passes = question.callback == Callback::kYes;
  }

  unsigned low = configuration.value("LogLevelLow").value_or(question.filter_low);
  unsigned high = configuration.value("LogLevelHigh").value_or(question.filter_high);
  if (decision.debug_entry) {
    low = configuration.value("DebugLogLevelLow").value_or(low);
    high = configuration.value("DebugLogLevelHigh").value_or(high);
  }
  const bool level_passes = !(question.level < low) && !(question.level > high);

  bool mask_passes = false;
  if (!configuration.exists) {
    mask_passes = shares_a_bit(question.entry_mask, question.filter_mask);
  } else if (bypass) {
    mask_passes = true;
  } else if (const auto mask = configuration.value("PropertyMask")) {
    mask_passes = shares_a_bit(question.entry_mask, *mask);
  } else {
    mask_passes = shares_a_bit(question.entry_mask, question.filter_mask);
  }
  decision.passes = callback_passes && level_passes && mask_passes;
  return decision;
}

/// Asks the filter every question under the configuration that is set.
class EntryFilterTable : public EntryFilterTest {
 protected:
  void ask(const Configuration& configuration, const Question& question) {
    CallbackCalls calls{.answer = question.callback == Callback::kYes};
    const _qz_LOG_entry_filter filter = {question.callback == Callback::kNone ? nullptr : record_call,
                                         &calls,
                                         question.filter_mask,
                                         question.filter_low,
                                         question.filter_high,
                                         "app",
                                         false,
                                         false};
    const qz_LOG_LogEntry& entry = entry_of(question.id, question.level);
    const bool passes = filter.check_entry(entry);
    const Decision expected = decide(configuration, question);
    ++asked_;
    passed_ += passes ? 1 : 0;
    const bool same = passes == expected.passes && filter.debug_entry == expected.debug_entry &&
                      filter.debug_enabled == expected.debug_enabled && calls.count == expected.callback_calls;
    if (same) return;
    ADD_FAILURE() << "source " << configuration.exists << ":\n"
                  << configuration.text() << "id " << question.id << " level " << question.level << " callback "
                  << static_cast<int>(question.callback) << " mask " << question.filter_mask << " bounds "
                  << question.filter_low << "-" << question.filter_high << " passes " << passes << " expected "
                  << expected.passes << " calls " << calls.count;
  }

  void ask_everything(const Configuration& configuration, unsigned low, unsigned high) {
    struct Entry {
      unsigned id;
      unsigned mask;
    };
    for (const Entry& entry : {Entry{kOrdinaryId, kOrdinaryMask}, {kDebugId, kDebugMask}}) {
      for (const unsigned level : {0U, 3U, 6U, 9U}) {
        for (const Callback callback : {Callback::kNone, Callback::kYes, Callback::kNo}) {
          for (const unsigned mask : {0x20U, 0x40U}) {
            ask(configuration, {entry.id, entry.mask, level, callback, mask, low, high});
            if (HasFailure()) return;
          }
        }
      }
    }
  }

  void expect_a_mixture() const {
    EXPECT_GT(passed_, asked_ / 50);
    EXPECT_LT(passed_, asked_ * 49 / 50);
    std::cout << "decisions compared: " << asked_ << ", passed: " << passed_ << "\n";
  }

  int asked_ = 0;
  int passed_ = 0;

 private:
  const qz_LOG_LogEntry& entry_of(unsigned id, unsigned level) {
    return entries_.try_emplace({id, level}, id, level).first->second;
  }

  std::map<std::pair<unsigned, unsigned>, qz_LOG_LogEntry> entries_;
};

unsigned random_value(SeededRandom& random, const std::string& key) {
  static constexpr unsigned kMasks[] = {0, 0x20, 0x40, 0x4000000, 0xFFFFFFFF, 0xFBFFFFDE};
  if (key == "DebugEnabled") return static_cast<unsigned>(random.between(0, 2));
  if (key == "PropertyMask") return kMasks[random.between(0, 5)];
  const bool is_low = key.find("Low") != std::string::npos;
  return static_cast<unsigned>(is_low ? random.between(0, 5) : random.between(3, 11));
}

TEST_F(EntryFilterTable, NoSource_AllQuestionsAsTheRulesSay) {
  for (unsigned low = 0; low <= 9; ++low) {
    for (unsigned high = 0; high <= 9; ++high) ask_everything({}, low, high);
  }
  expect_a_mixture();
}

// Every key absent, in the section, in "global" or, with another value, in both: 4^6 configurations.
TEST_F(EntryFilterTable, EveryPlacingOfTheKeys_AllQuestionsAsTheRulesSay) {
  SeededRandom random;
  for (unsigned placing = 0; placing < 4096 && !HasFailure(); ++placing) {
    Configuration configuration{.exists = true};
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
      const unsigned places = placing >> (2 * i) & 3;
      if ((places & 1) != 0) configuration.app[kKeys[i]] = random_value(random, kKeys[i]);
      if ((places & 2) != 0) configuration.global[kKeys[i]] = random_value(random, kKeys[i]);
    }
    configure(configuration.text());
    ask_everything(configuration, static_cast<unsigned>(random.between(0, 4)),
                   static_cast<unsigned>(random.between(3, 9)));
  }
  expect_a_mixture();
}

}  // namespace
