// The table against a plain model of it: a queue of 128 definitions over an index, and nothing kept beyond.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <deque>
#include <fstream>
#include <map>
#include <random>

#include <string>
#include <vector>

#include "tests/definitions/table_test.h"
#include "tests/support/definition_memory_limit.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

/// What a definition says, as a text.
struct State {
  unsigned word = 0;
  unsigned mask = 0;
  std::string tag;
  std::string message = "(null)|(null)";
  Texts attributes;
  Texts messages;

  std::string text() const {
    std::string all = std::to_string(word) + " " + std::to_string(mask) + " " + tag + " " + message;
    for (const std::string& each : attributes) all += " " + each;
    for (const std::string& each : messages) all += " " + each;
    return all;
  }
};

State state_of(const _qz_LOG_log_definition& definition) {
  return {definition.get_entry_word(), definition.get_property_mask(), definition.get_version_tag(),
          default_message(definition), own_attributes(definition),     selector_messages(definition)};
}

class ModelTable {
 public:
  void load_std(const LdfFile& file) {
    *this = ModelTable();
    std_ = file;
    for (const LdfEntry& entry : file.entries) index_[entry.id] = {false, &entry - file.entries.data()};
  }
  void load_aux(const LdfFile& file) {
    aux_ = file;
    for (const LdfEntry& entry : file.entries) {
      State* const known = index_.contains(entry.id) ? find(entry.id) : nullptr;
      index_[entry.id] = {true, &entry - file.entries.data()};
      if (known != nullptr) add(entry, file.tag, true, *known);
    }
  }
  void clear() { *this = ModelTable(); }

  /// Null for an unknown ID. Valid until the next call.
  State* find(unsigned id) {
    for (auto& [cached_id, state] : cache_) {
      if (cached_id == id) return &state;
    }
    const auto place = index_.find(id);
    if (place == index_.end()) return nullptr;
    const auto& [is_aux, record] = place->second;
    const LdfFile& file = is_aux ? aux_ : std_;
    State fresh;
    add(file.entries[static_cast<std::size_t>(record)], file.tag, is_aux, fresh);
    cache_.emplace_back(id, fresh);
    if (cache_.size() > qz_DefinitionCacheSize) cache_.pop_front();
    return &cache_.back().second;
  }

 private:
  static void add(const LdfEntry& entry, const std::string& tag, bool is_aux, State& state) {
    state.word = entry.word;
    if (state.mask == 0) state.mask = entry.mask;
    state.tag = tag;
    const bool has_message = !entry.message_id.empty() && !entry.message_text.empty();
    if (!is_aux || has_message) state.message = entry.message_id + "|" + entry.message_text;
    for (const LdfAttribute& each : entry.attributes) {
      state.attributes.push_back(each.name + ":" + std::to_string(each.type) + ">" + each.redirection_name);
    }
    for (const LdfSelectorMessage& each : entry.selector_messages) {
      state.messages.push_back(std::to_string(each.index) + "=" + std::to_string(each.value) + " " + each.id + "|" +
                               each.text);
    }
  }

  LdfFile std_;
  LdfFile aux_;
  std::map<unsigned, std::pair<bool, std::ptrdiff_t>> index_;
  std::deque<std::pair<unsigned, State>> cache_;
};

constexpr unsigned kIds = 320;

class LdfModel : public TableTest {
 protected:
  LdfEntry random_entry(unsigned id, bool is_aux) {
    LdfEntry entry{.id = id, .word = number(), .mask = random_.one_in(3) ? 0 : number()};
    if (!is_aux || random_.one_in(2)) entry.message_id = "M" + std::to_string(number());
    if (!is_aux || random_.one_in(2)) entry.message_text = "text " + std::to_string(random_.between(0, 5));
    const char* const prefix = is_aux ? "aux" : "std";
    for (long long i = random_.between(0, 12); i > 0; --i) {
      entry.attributes.push_back({prefix + std::to_string(i), static_cast<unsigned>(random_.between(0, 30)), "r"});
    }
    if (random_.one_in(4)) entry.selector_messages = {{is_aux ? 2U : 1U, is_aux ? 20U : 10U, "S", "s"}};
    return entry;
  }
  LdfFile random_file(bool is_aux) {
    LdfFile file{.tag = is_aux ? "aux" + std::to_string(random_.between(0, 99)) : "s" + std::to_string(number() % 99)};
    for (unsigned id = 1; id <= kIds; ++id) {
      if (random_.one_in(is_aux ? 4 : 2)) file.entries.push_back(random_entry(id, is_aux));
    }
    std::shuffle(file.entries.begin(), file.entries.end(), engine_);
    return file;
  }
  unsigned number() { return static_cast<unsigned>(random_.between(0, 1000)); }

  void load_std() {
    const LdfFile file = random_file(false);
    set_std(file);
    model_.load_std(file);
    has_std_ = true;
    has_aux_ = false;
  }
  void load_aux() {
    if (!has_std_ || has_aux_) return;
    const LdfFile file = random_file(true);
    set_aux(file);
    model_.load_aux(file);
    has_aux_ = true;
  }
  void clear() {
    table_.clear();
    model_.clear();
    has_std_ = false;
  }
  void add_attribute(unsigned id) {
    _qz_LOG_log_definition* const found = table_.find_entry(id);
    State* const expected = model_.find(id);
    if (expected == nullptr) return;
    const std::string name = "run" + std::to_string(random_.between(0, 3));
    if (found->get_attr_info_by_name(name.c_str()) != nullptr) return;
    found->add_attr_info(name.c_str(), TypeBool, false, nullptr);
    expected->attributes.push_back(name + ":1>(null)");
  }
  void expect_alike(unsigned id) {
    const _qz_LOG_log_definition* const found = table_.find_entry(id);
    const State* const expected = model_.find(id);
    ASSERT_EQ(found != nullptr, expected != nullptr) << id;
    if (found == nullptr) return;
    ASSERT_EQ(state_of(*found).text(), expected->text()) << id;
  }
  /// Lookups of many IDs, so that some come back that were replaced.
  void look_up_many() {
    const auto count = random_.between(1, 400);
    const bool in_turn = random_.one_in(2);
    for (long long i = 0; i < count && !HasFatalFailure(); ++i) {
      expect_alike(in_turn ? static_cast<unsigned>(i % kIds) + 1 : static_cast<unsigned>(random_.between(1, kIds + 5)));
    }
  }
  void step() {
    switch (random_.between(0, 30)) {
      case 0:
        return load_std();
      case 1:
      case 2:
        return load_aux();
      case 3:
        return random_.one_in(4) ? clear() : look_up_many();
      case 4:
      case 5:
      case 6:
        return add_attribute(static_cast<unsigned>(random_.between(1, kIds)));
      default:
        return look_up_many();
    }
  }

  SeededRandom random_;
  std::mt19937 engine_{random_.seed()};
  ModelTable model_;
  bool has_std_ = false;
  bool has_aux_ = false;
};

TEST_F(LdfModel, RandomSequencesWithAnyMemory_AsAPlainQueue) {
  for (const std::size_t memory : {std::size_t{0}, std::size_t{1}, std::size_t{4000}, std::size_t{40'000},
                                   std::size_t{150'000}, std::size_t{32} << 20}) {
    SCOPED_TRACE(memory);
    const DefinitionMemoryLimit limit(memory);
    load_std();
    for (int i = 0; i < rounds(250) && !HasFatalFailure(); ++i) step();
  }
}

TEST_F(LdfModel, MemoryChangedMeanwhile_AsAPlainQueue) {
  const DefinitionMemoryLimit restored(std::size_t{1} << 20);
  load_std();
  for (int i = 0; i < rounds(500) && !HasFatalFailure(); ++i) {
    if (random_.one_in(5)) qz_LOG_LogConfig::SetDefinitionMemory(std::size_t{1} << random_.between(0, 20));
    if (random_.one_in(5)) table_.fit_memory();
    step();
  }
}

// ---- what is kept ----

class LdfKept : public TableTest {
 protected:
  LdfKept() { set_std({.tag = "std", .entries = numbered_entries(1, 400)}); }

  void look_up(unsigned first, unsigned last) {
    for (unsigned id = first; id <= last; ++id) at(id);
  }
  /// Waits until the file is old enough to be trusted.
  void let_file_age(const char* name = "std.ldf") const {
    struct stat status {};
    ASSERT_EQ(stat(folder_.path(name).c_str(), &status), 0);
    std::timespec now = {};
    do {
      clock_gettime(CLOCK_REALTIME, &now);
    } while ((now.tv_sec - status.st_ctim.tv_sec) * 1000 + (now.tv_nsec - status.st_ctim.tv_nsec) / 1'000'000 < 70);
  }
  static void wait_for_the_next_tick() {
    std::timespec begin = {};
    std::timespec now = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &begin);
    do {
      clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    } while (begin.tv_nsec == now.tv_nsec && begin.tv_sec == now.tv_sec);
  }
  /// Writes over a part of the file's bytes in place.
  void overwrite(const std::string& former, const std::string& latter) const {
    const std::string path = folder_.path("std.ldf");
    std::string bytes = LdfFile{.tag = "std", .entries = numbered_entries(1, 400)}.bytes();
    const std::size_t at = bytes.find(former);
    ASSERT_NE(at, std::string::npos);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(at));
    file << latter;
    ASSERT_TRUE(file.flush().good());
  }
};

TEST_F(LdfKept, EvictedDefinition_ComesBackAsItWas) {
  let_file_age();
  at(1);
  wait_for_the_next_tick();
  const _qz_LOG_log_definition* const first = &at(1);
  look_up(2, 200);
  EXPECT_EQ(&at(1), first);
}

TEST_F(LdfKept, NoMemory_NothingComesBack) {
  const DefinitionMemoryLimit nothing(0);
  let_file_age();
  const auto held = table_.acquire_entry(1);
  look_up(2, 200);
  EXPECT_NE(&at(1), held.get());
}

TEST_F(LdfKept, ChangedDefinition_ReadAgain) {
  let_file_age();
  table_.find_entry(1)->add_attr_info("more", TypeBool, false, nullptr);
  look_up(2, 200);
  EXPECT_EQ(own_attributes(at(1)), Texts({"user:9>"}));
}

TEST_F(LdfKept, ChangedWhileItIsKept_ReadAgain) {
  let_file_age();
  const auto held = table_.acquire_entry(1);
  look_up(2, 200);
  held->set_default_msg_text("changed");
  EXPECT_EQ(default_message(at(1)), "MSG_1|entry 1 of %s%user%");
}

TEST_F(LdfKept, FileOverwritten_NewBytesFromTheNextTickOn) {
  let_file_age();
  look_up(1, 300);
  overwrite("entry 1 of ", "ENTRY 1 OF ");
  wait_for_the_next_tick();
  EXPECT_EQ(default_message(at(1)), "MSG_1|ENTRY 1 OF %s%user%");
  // What is cached stays.
  EXPECT_EQ(default_message(at(300)), "MSG_300|entry 300 of %s%user%");
}

TEST_F(LdfKept, FileOverwrittenWhileDefinitionsAreCached_ReadAgainWhenTheyWereReplaced) {
  let_file_age();
  look_up(1, 100);
  overwrite("entry 1 of ", "ENTRY 1 OF ");
  wait_for_the_next_tick();
  EXPECT_EQ(default_message(at(1)), "MSG_1|entry 1 of %s%user%");
  at(101);  // notices it
  let_file_age();
  wait_for_the_next_tick();
  look_up(102, 300);
  EXPECT_EQ(default_message(at(1)), "MSG_1|ENTRY 1 OF %s%user%");
}

TEST_F(LdfKept, FileOverwrittenWhileItIsYoung_NewBytesAtOnce) {
  look_up(1, 200);
  overwrite("entry 1 of ", "ENTRY 1 OF ");
  EXPECT_EQ(default_message(at(1)), "MSG_1|ENTRY 1 OF %s%user%");
}

TEST_F(LdfKept, FileCutInPlace_UnreadableAndNoSignal) {
  let_file_age();
  look_up(1, 300);
  ASSERT_EQ(truncate(folder_.path("std.ldf").c_str(), 64), 0);
  wait_for_the_next_tick();
  EXPECT_EQ(thrown_by([&] { at(1); }), thrown<QZX_logging_invalid_definition>(kUnreadable));
  EXPECT_EQ(default_message(at(300)), "MSG_300|entry 300 of %s%user%");
}

TEST_F(LdfKept, FileReplaced_RecordsOfTheOneThatIsOpen) {
  let_file_age();
  look_up(1, 300);
  const std::string other = folder_.write("other.ldf", "something else");
  ASSERT_EQ(rename(other.c_str(), folder_.path("std.ldf").c_str()), 0);
  wait_for_the_next_tick();
  EXPECT_EQ(default_message(at(1)), "MSG_1|entry 1 of %s%user%");
}

TEST_F(LdfKept, SecondAuxFile_RecordsOfTheFirstNotKept) {
  let_file_age();
  set_aux({.tag = "one", .entries = {{.id = 1000, .word = 1}, {.id = 1001, .word = 2}}});
  at(1000);
  at(1001);
  set_aux({.tag = "two", .entries = {{.id = 1000, .word = 3}, {.id = 1001, .word = 4}}});
  look_up(1, 300);
  EXPECT_EQ(at(1000).get_entry_word(), 3U);
  EXPECT_STREQ(at(1001).get_version_tag(), "two");
}

TEST_F(LdfKept, AuxFileThatCannotBeMerged_ItsRecordAloneOnceTheOtherWasReplaced) {
  LdfFile standard = {.tag = "std", .entries = numbered_entries(1, 400)};
  standard.entries[0].attributes = {{"kind", TypeUInt4}};
  standard.entries[0].selector = "kind";
  const LdfEntry other = {.id = 1, .selector = "other", .attributes = {{"other", TypeUInt4}}};
  for (const std::size_t memory : {std::size_t{0}, std::size_t{1} << 20}) {
    const DefinitionMemoryLimit limit(memory);
    set_std(standard);
    const std::string aux = folder_.write("old.ldf", LdfFile{.tag = "aux", .entries = {other}}.bytes());
    let_file_age("old.ldf");
    EXPECT_NE(thrown_by([&] { table_.set_precompiled_aux_definition_file_path(aux.c_str()); }), "nothing");
    EXPECT_STREQ(at(1).get_version_tag(), "std");
    look_up(2, 300);
    EXPECT_STREQ(at(1).get_version_tag(), "aux");
  }
}

TEST_F(LdfKept, SecondAuxFileThatBreaksOff_IdsOfTheFirstAreUnknown) {
  for (const std::size_t memory : {std::size_t{0}, std::size_t{1} << 20}) {
    const DefinitionMemoryLimit limit(memory);
    set_std({.tag = "std", .entries = numbered_entries(1, 400)});
    set_aux({.tag = "one", .entries = {{.id = 1000}}});
    let_file_age("aux.ldf");
    at(1000);
    const std::string second = LdfFile{.tag = "two", .entries = {{.id = 2000}}, .region_order = "grm"}.bytes();
    EXPECT_NE(thrown_by([&] { set_aux_bytes(second.substr(0, second.size() - 2)); }), "nothing");
    at(1000);
    look_up(1, 300);
    EXPECT_EQ(table_.find_entry(1000), nullptr);
  }
}

TEST_F(LdfKept, IdOfTheFirstAuxFileAlone_SoughtAtItsPlaceInTheSecond) {
  Texts thrown;
  for (const std::size_t memory : {std::size_t{0}, std::size_t{1} << 20}) {
    const DefinitionMemoryLimit limit(memory);
    set_std({.tag = "std", .entries = numbered_entries(1, 400)});
    set_aux({.tag = "one", .entries = {{.id = 1000, .word = 1}}});
    EXPECT_EQ(at(1000).get_entry_word(), 1U);
    let_file_age("aux.ldf");
    set_aux({.tag = "two", .entries = {{.id = 2000, .word = 3}}});
    at(2000);
    let_file_age("aux.ldf");
    wait_for_the_next_tick();
    EXPECT_EQ(at(1000).get_entry_word(), 1U);
    look_up(1, 300);
    thrown.push_back(thrown_by([&] { at(1000); }));
  }
  EXPECT_NE(thrown[0].find("QZX_logging_invalid_definition"), std::string::npos) << thrown[0];
  EXPECT_EQ(thrown[1], thrown[0]);
}

}  // namespace
