#include "entry/attribute_store.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

// ---- values that a number stands for ----

/// A text whose length goes from what fits inside a string object to what does not.
std::string text_of_number(unsigned number) { return std::to_string(number) + std::string(number % 60, 't'); }

template <typename T>
T value_of_number(unsigned number) {
  if constexpr (std::is_same_v<T, qz_String> || std::is_same_v<T, _qz_LOG_ustring>) {
    return T(text_of_number(number).c_str());
  } else if constexpr (std::is_same_v<T, qz_Time>) {
    return qz_Time::from_unix_seconds(1000000000LL + number);
  } else {
    return static_cast<T>(number);
  }
}

template <unsigned char code>
void put_number(AttributeStore& store, const KnownName* name, unsigned number) {
  store.put<code>(name, number % 15, value_of_number<typename ValueOf<code>::type>(number));
}

template <unsigned char code>
std::unique_ptr<_qz_LOG_type_base> new_number(unsigned number) {
  return std::make_unique<StoredValue<code>>(value_of_number<typename ValueOf<code>::type>(number));
}

using Put = void (*)(AttributeStore& store, const KnownName* name, unsigned number);
using Make = std::unique_ptr<_qz_LOG_type_base> (*)(unsigned number);

template <std::size_t... index>
constexpr std::array<Put, sizeof...(index)> all_puts(std::index_sequence<index...> /*codes*/) {
  return {put_number<static_cast<unsigned char>(index + 1)>...};
}
template <std::size_t... index>
constexpr std::array<Make, sizeof...(index)> all_makers(std::index_sequence<index...> /*codes*/) {
  return {new_number<static_cast<unsigned char>(index + 1)>...};
}
constexpr auto kPuts = all_puts(std::make_index_sequence<24>());
constexpr auto kMakers = all_makers(std::make_index_sequence<24>());

const KnownName* name_of(const std::string& text) { return KnownName::of(text.c_str()); }

/// "code value" as the value prints itself; strings in full.
std::string shown(const _qz_LOG_type_base* value) {
  if (value == nullptr) return "(none)";
  char buffer[512] = "";
  value->print_out(buffer);
  return std::to_string(value->get_type()) + " " + buffer;
}
std::string shown(unsigned code, unsigned number) { return shown(kMakers[code - 1](number).get()); }

/// A store and what it should hold.
class ModelledStore {
 public:
  void put(const std::string& name, unsigned code, unsigned number) {
    kPuts[code - 1](store, name_of(name), number);
    model[name] = shown(code, number);
  }
  void put_copy(const std::string& name, unsigned code, unsigned number) {
    store.put_copy(name_of(name), *kMakers[code - 1](number));
    model[name] = shown(code, number);
  }
  void remove(const std::string& name) {
    ASSERT_EQ(store.remove(AttributeName(name.c_str())), model.erase(name) == 1) << name;
  }
  void clear() {
    store.clear();
    model.clear();
  }

  std::string find(const std::string& name) const { return shown(store.find(AttributeName(name.c_str()))); }

  void expect_right() const {
    std::map<std::string, std::string> found;
    store.for_each([&](const KnownName* name, const _qz_LOG_type_base& value) {
      ASSERT_TRUE(found.emplace(name->text(), shown(&value)).second) << name->text() << " twice";
      ASSERT_EQ(store.find(name, 0), &value) << name->text();
    });
    ASSERT_EQ(found, model);
    for (const auto& [name, value] : model) ASSERT_EQ(find(name), value) << name;
  }

  AttributeStore store;
  std::map<std::string, std::string> model;
};

std::string numbered(unsigned number) { return "name " + std::to_string(number); }

// ---- one value, few and many ----

TEST(AttributeStore, Empty_FindsRemovesAndVisitsNothing) {
  ModelledStore values;
  EXPECT_EQ(values.find("user"), "(none)");
  EXPECT_EQ(values.store.find(name_of("user"), 0), nullptr);
  EXPECT_EQ(values.store.find(name_of("user"), 5), nullptr);
  values.remove("user");
  values.clear();
  values.expect_right();
}

TEST(AttributeStore, EveryType_StoredAndReplacedByEveryType) {
  for (unsigned former = 1; former <= 24; ++former) {
    for (unsigned code = 1; code <= 24; ++code) {
      ModelledStore values;
      values.put("user", former, 59);
      values.put("other", former, 58);
      values.put("user", code, 57);
      values.expect_right();
      values.put_copy("other", code, 56);
      values.expect_right();
      EXPECT_EQ(values.model.size(), 2U);
    }
  }
}

TEST(AttributeStore, ValuesUpTo600_EachFoundAtEveryCount) {
  ModelledStore values;
  for (unsigned i = 0; i < 600; ++i) {
    values.put(numbered(i), 1 + i % 24, i);
    if (i < 40 || i % 50 == 0) values.expect_right();
    EXPECT_EQ(values.find("name"), "(none)");
  }
  values.expect_right();
  for (unsigned i = 0; i < 600; ++i) values.put(numbered(i), 1 + (i + 7) % 24, i + 1);
  values.expect_right();
  for (unsigned i = 0; i < 600; i += 3) values.remove(numbered(i));
  values.expect_right();
  for (unsigned i = 0; i < 900; ++i) values.put(numbered(i), 1 + i % 24, i);
  values.expect_right();
  values.clear();
  values.expect_right();
  for (unsigned i = 0; i < 11; ++i) values.put(numbered(i), 9, i);
  values.expect_right();
}

TEST(AttributeStore, MoreValuesThan16BitsCount_EachFound) {
  // An entry whose ID changes keeps its values: over many IDs they become that many.
  constexpr unsigned kMany = 66000;
  AttributeStore store;
  for (unsigned i = 0; i < kMany; ++i) store.put<TypeUInt4>(name_of(numbered(i)), i, static_cast<unsigned>(i));
  unsigned lost = 0;
  for (unsigned i = 0; i < kMany; ++i) {
    const _qz_LOG_type_base* const value = store.find(AttributeName(numbered(i).c_str()));
    if (value == nullptr || value_as<unsigned>(*value) != i) ++lost;
  }
  EXPECT_EQ(lost, 0U);
}

TEST(AttributeStore, RemovedAndAddedAroundTheInlineSize_AsAMap) {
  for (unsigned count = 8; count <= 13; ++count) {
    for (unsigned removed = 0; removed < count; ++removed) {
      ModelledStore values;
      for (unsigned i = 0; i < count; ++i) values.put(numbered(i), 9, i);
      values.remove(numbered(removed));
      values.remove(numbered(removed));
      values.expect_right();
      values.put("another", 15, 40);
      values.expect_right();
      values.put(numbered(removed), 6, 1);
      values.put("one more", 8, 2);
      values.expect_right();
      for (unsigned i = 0; i < count; ++i) values.remove(numbered(i));
      values.expect_right();
      for (unsigned i = count; i > 0; --i) values.put(numbered(i), 21, i);
      values.expect_right();
    }
  }
}

TEST(AttributeStore, EqualHashes_NotConfused) {
  // my_hashcode sees about eight characters of a long name.
  const auto name = [](char difference) {
    std::string text(40, 'x');
    text[1] = difference;
    return text;
  };
  ModelledStore values;
  for (char difference = 'a'; difference <= 'y'; ++difference) {
    values.put(name(difference), 9, static_cast<unsigned>(difference));
    EXPECT_EQ(values.find(name('z')), "(none)");
  }
  values.expect_right();
  for (char difference = 'a'; difference <= 'y'; difference = static_cast<char>(difference + 2)) {
    values.remove(name(difference));
    values.expect_right();
  }
}

TEST(AttributeStore, EmptyAndVeryLongNames_AsOthers) {
  ModelledStore values;
  values.put("", 9, 1);
  values.put(std::string(100000, 'n'), 9, 2);
  values.put(std::string(100001, 'n'), 9, 3);
  values.expect_right();
  values.remove("");
  values.expect_right();
}

// ---- the expected place ----

TEST(AttributeStore, AnyExpectedPlace_SameValue) {
  ModelledStore values;
  for (unsigned count = 0; count <= 25; ++count) {
    for (unsigned i = 0; i < 27; ++i) {
      const KnownName* const name = name_of(numbered(i));
      const _qz_LOG_type_base* const found = values.store.find(name, count);
      for (unsigned expected = 0; expected <= 30; ++expected) EXPECT_EQ(values.store.find(name, expected), found);
      EXPECT_EQ(values.store.find(name, 0xFFFFFFFFU), found);
      EXPECT_EQ(found != nullptr, i < count);
    }
    values.put(numbered(count), 9, count);
  }
}

TEST(AttributeStore, ExpectedAtThePlaceOfARemovedValue_None) {
  ModelledStore values;
  for (unsigned i = 0; i < 5; ++i) values.put(numbered(i), 9, i);
  values.remove(numbered(2));
  for (unsigned expected = 0; expected < 6; ++expected) {
    EXPECT_EQ(values.store.find(name_of(numbered(2)), expected), nullptr);
  }
  values.put("in its place", 9, 7);
  EXPECT_EQ(values.store.find(name_of(numbered(2)), 2), nullptr);
  values.clear();
  for (unsigned expected = 0; expected < 6; ++expected) {
    EXPECT_EQ(values.store.find(name_of(numbered(1)), expected), nullptr);
  }
}

// ---- what callers hold on to ----

const char* char_text(const AttributeStore& store, const std::string& name) {
  return value_as<qz_String>(*store.find(name_of(name), 0)).c_str();
}
const char* mbchar_text(const AttributeStore& store, const std::string& name) {
  return value_as<_qz_LOG_ustring>(*store.find(name_of(name), 0)).text();
}

TEST(AttributeStore, OthersAddedReplacedAndRemoved_TextsStayWhereTheyAre) {
  for (const unsigned first : {0U, 9U, 10U, 30U}) {
    ModelledStore values;
    for (unsigned i = 0; i < first; ++i) values.put(numbered(i), 6, i);
    values.put("short", TypeChar32, 1);
    values.put("long", TypeChar32, 59);
    values.put("wide", TypeMBChar32, 59);
    const char* const short_text = char_text(values.store, "short");
    const char* const long_text = char_text(values.store, "long");
    const char* const wide_text = mbchar_text(values.store, "wide");
    for (unsigned i = 0; i < 300; ++i) values.put(numbered(100 + i), 9, i);
    for (unsigned i = 0; i < 300; ++i) values.put(numbered(100 + i), 20, i);
    for (unsigned i = 0; i < 300; i += 2) values.remove(numbered(100 + i));
    for (unsigned i = 0; i < 300; ++i) values.put(numbered(500 + i), 9, i);
    EXPECT_EQ(char_text(values.store, "short"), short_text);
    EXPECT_EQ(char_text(values.store, "long"), long_text);
    EXPECT_EQ(mbchar_text(values.store, "wide"), wide_text);
    EXPECT_EQ(std::string(short_text), text_of_number(1));
    EXPECT_EQ(std::string(long_text), text_of_number(59));
    EXPECT_EQ(std::string(wide_text), text_of_number(59));
    values.expect_right();
  }
}

TEST(AttributeStore, TextOfTheValueItself_PutAgain) {
  for (const unsigned number : {0U, 5U, 59U}) {
    ModelledStore values;
    for (unsigned i = 0; i < 12; ++i) {
      const std::string name = numbered(i);
      values.put(name, TypeChar32, number);
      values.store.put<TypeChar32>(name_of(name), i, qz_String(char_text(values.store, name)));
      EXPECT_EQ(values.find(name), shown(TypeChar32, number));
      values.store.put<TypeMBChar32>(name_of(name), i, _qz_LOG_ustring(char_text(values.store, name)));
      EXPECT_EQ(values.find(name), shown(TypeMBChar32, number));
      values.store.put<TypeMBChar32>(name_of(name), i, _qz_LOG_ustring(mbchar_text(values.store, name) + 1));
      EXPECT_EQ(values.find(name), "15 " + text_of_number(number).substr(1));
      values.store.put<TypeChar64>(name_of(name), i, qz_String(mbchar_text(values.store, name)));
      EXPECT_EQ(values.find(name), "10 " + text_of_number(number).substr(1));
    }
  }
}

TEST(AttributeStore, ShortText_StoredInPlaceOfEveryType) {
  for (unsigned former = 1; former <= 24; ++former) {
    for (unsigned length = 0; length <= qz_String::kInlineCapacity; ++length) {
      ModelledStore values;
      values.put("user", former, 59);
      values.put("other", former, 58);
      const std::string text(length, 's');
      const KnownName* const name = name_of("user");
      const unsigned failures =
          FailEveryAllocation([&] { values.store.put_text<TypeChar128>(name, 0, text.c_str(), length); });
      EXPECT_EQ(failures, 0U) << former;
      values.model["user"] = std::to_string(TypeChar128) + " " + text;
      values.expect_right();
    }
  }
}

TEST(AttributeStore, ShortTextNewAmongFewAndMany_Stored) {
  ModelledStore values;
  for (unsigned i = 0; i < 40; ++i) {
    const std::string name = numbered(i);
    const KnownName* const known = name_of(name);
    const unsigned failures = FailEveryAllocation([&] { values.store.put_text<TypeChar32>(known, i, "short", 5); },
                                                  [&] { values.expect_right(); });
    EXPECT_EQ(failures == 0, i < AttributeStore::kInlineValues) << i;
    values.model[name] = "9 short";
    values.expect_right();
  }
}

TEST(AttributeStore, ShortTextOfTheValueItself_Stored) {
  for (const unsigned number : {5U, 59U}) {
    for (const unsigned former : {9U, 10U}) {
      ModelledStore values;
      values.put("text", former, number);
      const std::string text = shown(former, number).substr(former == 9 ? 2 : 3);
      values.store.put_text<TypeChar32>(name_of("text"), 0, char_text(values.store, "text") + 1, 4);
      EXPECT_EQ(values.find("text"), "9 " + text.substr(1, 4));
    }
  }
  ModelledStore values;
  values.put("text", TypeMBChar32, 59);
  values.store.put_text<TypeChar32>(name_of("text"), 0, mbchar_text(values.store, "text") + 1, 4);
  EXPECT_EQ(values.find("text"), "9 " + text_of_number(59).substr(1, 4));
}

TEST(AttributeStore, ValueItselfMovedOrCopiedIntoItsPlace_Unchanged) {
  for (const unsigned code : {6U, 8U, 9U, 15U, 21U}) {
    ModelledStore values;
    for (unsigned i = 0; i < 12; ++i) {
      values.put(numbered(i), code, 59);
      values.store.put_copy(name_of(numbered(i)), *values.store.find(name_of(numbered(i)), i));
    }
    values.expect_right();
  }
  ModelledStore texts;
  texts.put("text", TypeChar32, 59);
  auto& stored = static_cast<StoredValue<TypeChar32>&>(*texts.store.find(name_of("text"), 0));
  texts.store.put<TypeChar32>(name_of("text"), 0, std::move(stored.value));
  texts.expect_right();
  texts.put("wide", TypeMBChar32, 59);
  auto& wide = static_cast<StoredValue<TypeMBChar32>&>(*texts.store.find(name_of("wide"), 1));
  texts.store.put<TypeMBChar32>(name_of("wide"), 0, std::move(wide.value));
  texts.expect_right();
}

TEST(AttributeStore, ValueOfAnotherStore_CopiedAndIndependent) {
  ModelledStore values;
  AttributeStore copy;
  for (unsigned i = 0; i < 48; ++i) values.put(numbered(i), 1 + i % 24, 50 + i);
  values.store.for_each([&](const KnownName* name, const _qz_LOG_type_base& value) { copy.put_copy(name, value); });
  for (unsigned i = 0; i < 48; ++i) EXPECT_EQ(shown(copy.find(name_of(numbered(i)), i)), values.find(numbered(i)));
  copy.clear();
  values.expect_right();
}

TEST(AttributeStore, TextWithZeroBytes_CopiedWhole) {
  AttributeStore store;
  qz_String text;
  text._assign("a\0b and more than fits inside", 29);
  store.put_copy(name_of("text"), StoredValue<TypeChar32>(text));
  EXPECT_EQ(value_as<qz_String>(*store.find(name_of("text"), 0)).length(), 29U);
  store.put_copy(name_of("wide"), StoredValue<TypeMBChar32>(_qz_LOG_ustring("a\0b", 3)));
  EXPECT_EQ(value_as<_qz_LOG_ustring>(*store.find(name_of("wide"), 7)).length, 3U);
}

// ---- out of memory ----

TEST(AttributeStore, NoMemoryForAFurtherValue_MemoryAllocAndNothingChanged) {
  unsigned failures = 0;
  for (unsigned count = 0; count <= 70; ++count) {
    ModelledStore values;
    for (unsigned i = 0; i < count; ++i) values.put(numbered(i), 1 + i % 24, 50 + i);
    for (const unsigned code : {6U, 9U, 15U}) {
      const std::string name = "new " + std::to_string(code);
      const KnownName* const known = name_of(name);
      const std::unique_ptr<_qz_LOG_type_base> value = kMakers[code - 1](59);
      failures += FailEveryAllocation([&] { values.store.put_copy(known, *value); }, [&] { values.expect_right(); });
      values.model[name] = shown(value.get());
      values.expect_right();
    }
  }
  EXPECT_GT(failures, 300U);
}

TEST(AttributeStore, NoMemoryForAScalar_InlineOnesNeedNone) {
  ModelledStore values;
  for (unsigned i = 0; i < 40; ++i) {
    const std::string name = numbered(i);
    const KnownName* const known = name_of(name);
    const unsigned failures = FailEveryAllocation(
        [&] { values.store.put<TypeUInt4>(known, i, static_cast<unsigned>(i)); }, [&] { values.expect_right(); });
    EXPECT_EQ(failures == 0, i < AttributeStore::kInlineValues) << i;
    values.model[name] = shown(TypeUInt4, i);
    values.expect_right();
  }
}

TEST(AttributeStore, NoMemoryToReplace_FormerValueStays) {
  for (const unsigned count : {1U, 10U, 11U, 40U}) {
    ModelledStore values;
    for (unsigned i = 0; i < count; ++i) values.put(numbered(i), 1 + i % 24, 50 + i);
    for (unsigned i = 0; i < count; ++i) {
      const std::unique_ptr<_qz_LOG_type_base> value = kMakers[(i + 5) % 24](59);
      FailEveryAllocation([&] { values.store.put_copy(name_of(numbered(i)), *value); }, [&] { values.expect_right(); });
      values.model[numbered(i)] = shown(value.get());
      values.expect_right();
    }
  }
}

TEST(AttributeStore, NoMemoryAfterRemoving_PlacesUsedAgainNeedNone) {
  ModelledStore values;
  for (unsigned i = 0; i < 30; ++i) values.put(numbered(i), 9, i);
  for (unsigned i = 0; i < 30; i += 2) values.remove(numbered(i));
  for (unsigned i = 0; i < 30; i += 2) {
    const KnownName* const known = name_of(numbered(i));
    EXPECT_EQ(FailEveryAllocation([&] { values.store.put<TypeUInt4>(known, i, static_cast<unsigned>(i)); }), 0U);
    values.model[numbered(i)] = shown(TypeUInt4, i);
  }
  values.expect_right();
}

// ---- random ----

void change_at_random(SeededRandom& random, ModelledStore& values, unsigned names) {
  const std::string name = numbered(static_cast<unsigned>(random.between(0, names)));
  const auto code = static_cast<unsigned>(random.between(1, 24));
  const auto number = static_cast<unsigned>(random.between(0, 100000));
  switch (random.between(0, 9)) {
    case 0:
    case 1:
    case 2:
      return values.remove(name);
    case 3:
    case 4:
      return values.put_copy(name, code, number);
    case 5:
      if (random.one_in(60)) values.clear();
      return;
    default:
      return values.put(name, code, number);
  }
}

TEST(AttributeStore, RandomChanges_AsAMap) {
  SeededRandom random;
  for (const unsigned names : {4U, 9U, 10U, 12U, 40U, 300U, 600U}) {
    ModelledStore values;
    for (int i = 0; i < 4000 && !testing::Test::HasFatalFailure(); ++i) {
      change_at_random(random, values, names);
      if (i % 16 == 0) values.expect_right();
    }
    values.expect_right();
  }
}

TEST(AttributeStore, RandomChangesWithAFailingAllocationNowAndThen_AsAMap) {
  SeededRandom random;
  for (const unsigned names : {12U, 100U}) {
    for (unsigned i = 0; i < names + 1; ++i) name_of(numbered(i));
    ModelledStore values;
    for (int i = 0; i < 4000 && !testing::Test::HasFatalFailure(); ++i) {
      change_at_random(random, values, names);
      const std::string name = numbered(static_cast<unsigned>(random.between(0, names)));
      const KnownName* const known = name_of(name);
      const std::unique_ptr<_qz_LOG_type_base> value = kMakers[static_cast<std::size_t>(random.between(0, 23))](59);
      const auto nth = static_cast<unsigned>(random.between(1, 4));
      bool stored = true;
      try {
        const AllocationFailure failure(nth);
        values.store.put_copy(known, *value);
      } catch (const QZX_memory_alloc&) {
        stored = false;
      }
      if (stored) values.model[name] = shown(value.get());
      if (i % 16 == 0) values.expect_right();
    }
  }
}

TEST(AttributeStore, TextOfAnyLength_ReplacesEveryType) {
  for (unsigned former = 1; former <= 24; ++former) {
    for (unsigned length = 0; length <= 70; ++length) {
      ModelledStore values;
      values.put("user", former, 59);
      const std::string text(length, 's');
      values.store.put_text<TypeChar128>(name_of("user"), 0, text.c_str(), length);
      values.store.put_text<TypeChar128>(name_of("new"), 1, text.c_str(), length);
      values.model["user"] = values.model["new"] = std::to_string(TypeChar128) + " " + text;
      values.expect_right();
    }
  }
}

TEST(AttributeStore, LongTextWithoutMemory_FormerValueStays) {
  const std::string text(500, 'l');
  for (const unsigned former : {1U, 9U, 11U, 16U}) {
    ModelledStore values;
    values.put("user", former, 5);
    const auto put = [&] { values.store.put_text<TypeChar128>(name_of("user"), 0, text.c_str(), 500); };
    EXPECT_GT(FailEveryAllocation(put, [&] { values.expect_right(); }), 0U) << former;
    values.model["user"] = std::to_string(TypeChar128) + " " + text;
    values.expect_right();
  }
}

TEST(AttributeStore, LongTextReplacedByOneThatFits_KeepsItsMemory) {
  ModelledStore values;
  const std::string text(500, 'l');
  const KnownName* const name = name_of("user");
  values.store.put_text<TypeChar128>(name, 0, text.c_str(), 500);
  for (const unsigned length : {499U, 0U, 20U, 500U}) {
    EXPECT_EQ(FailEveryAllocation([&] { values.store.put_text<TypeChar128>(name, 0, text.c_str(), length); }), 0U);
    EXPECT_EQ(values.find("user"), std::to_string(TypeChar128) + " " + std::string(length, 'l'));
  }
}

}  // namespace
