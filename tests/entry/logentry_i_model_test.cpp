#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

/// What an entry has to hold.
struct Model {
  explicit Model(unsigned entry_id) : id(entry_id) {}

  unsigned id;
  unsigned level = 0;
  std::map<std::string, unsigned> numbers;
  std::map<std::string, std::string> texts;
};

/// An entry and its model, changed alike by random operations.
class Pair {
 public:
  Pair() : entry_(std::make_unique<Entry>(kId, 0U)) {}

  void change(SeededRandom& random) {
    const std::string name = "Attribute" + std::to_string(random.between(0, 39));
    const bool is_text = (name.back() - '0') % 2 == 0;
    switch (random.between(0, 5)) {
      case 0:
      case 1:
      case 2:
        is_text ? add_text(name, random) : add_number(name, random);
        break;
      case 3:
        EXPECT_EQ(entry_->remove_attrib(name.c_str()), model_.numbers.erase(name) + model_.texts.erase(name) == 1);
        break;
      case 4:
        model_.id = random.one_in(2) ? kId : kPlainId;
        model_.level = 0;
        entry_->set_entry_id(model_.id);
        break;
      default:
        model_.level = static_cast<unsigned>(random.between(0, 9));
        entry_->set_log_level(model_.level);
    }
    if (random.one_in(60)) {
      entry_->clear_attribs(random.one_in(2));
      model_ = Model(model_.id);
    }
  }

  void assign(const Pair& other) {
    const bool is_self = this == &other;
    *entry_ = *other.entry_;
    if (is_self) {
      model_ = Model(model_.id);
    } else {
      model_ = other.model_;
    }
  }

  void replace_by_copy(const Pair& other) {
    entry_ = std::make_unique<Entry>(*other.entry_);
    model_ = other.model_;
  }

  void check() const {
    EXPECT_EQ(entry_->get_entry_id(), model_.id);
    EXPECT_EQ(entry_->get_log_level(), model_.level);
    for (int i = 0; i < 40; ++i) {
      const std::string name = "Attribute" + std::to_string(i);
      const auto number = model_.numbers.find(name);
      const auto text = model_.texts.find(name);
      EXPECT_EQ(entry_->has_value(name.c_str()), number != model_.numbers.end() || text != model_.texts.end()) << name;
      if (number != model_.numbers.end()) {
        EXPECT_EQ(entry_->get_attrib_4u(name.c_str()), number->second);
      }
      if (text != model_.texts.end()) {
        EXPECT_EQ(entry_->get_attrib_str(name.c_str()), text->second);
      }
    }
  }

 private:
  void add_number(const std::string& name, SeededRandom& random) {
    model_.numbers[name] = static_cast<unsigned>(random.between(0, 4294967295LL));
    entry_->add_attrib_4u(name.c_str(), model_.numbers[name]);
  }
  void add_text(const std::string& name, SeededRandom& random) {
    std::string text = random.text(static_cast<std::size_t>(random.between(0, 64)));
    for (char& character : text) {
      if (character == '\n' || character == '\r') character = ' ';
    }
    entry_->add_attrib_str(name.c_str(), text.c_str(), true);
    model_.texts[name] = text;
  }

  std::unique_ptr<Entry> entry_;
  Model model_{kId};
};

class EntryModel : public EntryTest {
 protected:
  EntryModel() {
    LdfFile file{.tag = "1.1", .entries = {{.id = kId}, {.id = kPlainId}}};
    for (int i = 0; i < 40; ++i) {
      file.globals.push_back(
          {"Attribute" + std::to_string(i), static_cast<unsigned>(i % 2 == 0 ? TypeChar64 : TypeUInt4)});
    }
    load(file);
  }
};

TEST_F(EntryModel, RandomOperationsOnSeveralEntries_AgreeWithMaps) {
  SeededRandom random;
  std::vector<Pair> pairs(4);
  const auto any = [&]() -> Pair& { return pairs[static_cast<std::size_t>(random.between(0, 3))]; };
  for (int step = 0; step < 4000 && !HasFailure(); ++step) {
    Pair& chosen = any();
    if (random.one_in(50)) {
      chosen.assign(any());
    } else if (random.one_in(50)) {
      chosen.replace_by_copy(any());
    } else {
      chosen.change(random);
    }
    if (step % 10 == 0) {
      for (const Pair& pair : pairs) pair.check();
    }
  }
}

}  // namespace
