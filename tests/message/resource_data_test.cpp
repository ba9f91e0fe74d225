#include "message/resource_data.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "tests/message/bundle_maker.h"

namespace qz_test {
namespace {

using namespace qzlog;

constexpr const char* kSource =
    "STRING_TABLE { \"disk.full\" { \"Platte voll: %d%Count%\" } empty { \"\" } "
    "long { \"a text that is longer than forty characters are\" } nested { inner { \"text\" } list { \"a\", \"b\" } } "
    "number:int { 7 } numbers:intvector { 1, 2 } raw:bin { 010203 } other:alias { \"root\" } }";

/// Reads everything that the bundle has.
std::size_t read_all(const ResourceData& data, Resource resource, unsigned level) {
  std::size_t size = is_string(resource) ? data.text_of(resource).size() : 0;
  const ResourceData::Items items = data.items_of(resource);
  for (std::size_t i = 0; i < items.count && level < 4; ++i) {
    Resource found = 0;
    if (is_table(resource)) {
      EXPECT_TRUE(data.find(resource, data.key(items, i), found));
    }
    size += read_all(data, data.value(items, i), level + 1);
  }
  return size;
}

/// What reading and checking says; what is good is read as a whole.
std::string outcome_of(const std::string& bytes) {
  const ReadResource read = ResourceData::read(bytes);
  if (read.state != ReadResource::State::kGood) return read.problem;
  const char* const problem = read.data->check();
  if (problem != nullptr) return problem;
  read_all(*read.data, read.data->root(), 0);
  return "good";
}

TEST(ResourceData, AnyByteWithAnyValue_IsRefusedOrReadable) {
  for (const char* const version : {"--formatVersion 1", "--formatVersion 2", "--formatVersion 3"}) {
    const std::string whole = make_bundle(kSource, version);
    ASSERT_EQ(outcome_of(whole), "good");
    unsigned good = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
      for (int value = 0; value < 256; ++value) {
        std::string changed = whole;
        changed[i] = static_cast<char>(value);
        good += outcome_of(changed) == "good" ? 1U : 0U;
      }
    }
    EXPECT_GT(good, whole.size());
    EXPECT_LT(good, whole.size() * 256);
  }
}

/// A bundle of format version 2, written by hand: keys first, then words.
class Bundle {
 public:
  static constexpr std::size_t kIndexEnd = 8;

  explicit Bundle(std::string keys) : keys_(std::move(keys)) { keys_.resize((keys_.size() + 3) / 4 * 4, '\0'); }

  /// Where the next word stands.
  std::uint32_t here() const { return static_cast<std::uint32_t>(kIndexEnd + keys_.size() / 4 + words_.size()); }
  static constexpr std::uint32_t key(std::size_t offset) { return static_cast<std::uint32_t>(kIndexEnd * 4 + offset); }
  void add(std::uint32_t word) { words_.push_back(word); }
  static Resource make(ResourceType type, std::uint32_t offset) {
    return static_cast<Resource>(type) << kResourceTypeShift | offset;
  }

  std::string bytes(Resource root) const {
    const std::uint32_t keys_end = static_cast<std::uint32_t>(kIndexEnd + keys_.size() / 4);
    const std::vector<std::uint32_t> begin = {root, 7, keys_end, here(), here(), 0, 0, keys_end};
    std::string bytes = make_bundle("").substr(0, 32);
    for (const auto* words : {&begin, &words_}) {
      bytes.append(reinterpret_cast<const char*>(words->data()), words->size() * 4);
      if (words == &begin) bytes += keys_;
    }
    return bytes;
  }

 private:
  std::string keys_;
  std::vector<std::uint32_t> words_;
};

/// A table with one key, "k", at the beginning of the keys.
Resource add_table(Bundle& bundle, Resource value) {
  const std::uint32_t offset = bundle.here();
  bundle.add(1);
  bundle.add(Bundle::key(0));
  bundle.add(value);
  return Bundle::make(ResourceType::kTable32, offset);
}

Resource add_array(Bundle& bundle, const std::vector<Resource>& values) {
  const std::uint32_t offset = bundle.here();
  bundle.add(static_cast<std::uint32_t>(values.size()));
  for (const Resource value : values) bundle.add(value);
  return Bundle::make(ResourceType::kArray, offset);
}

TEST(ResourceData, WrittenByHand_IsRead) {
  Bundle bundle(std::string("k\0", 2));
  const Resource text = Bundle::make(ResourceType::kString, bundle.here());
  bundle.add(2);
  bundle.add('a' | 'b' << 16);
  EXPECT_EQ(outcome_of(bundle.bytes(add_table(bundle, text))), "good");
}

TEST(ResourceData, NestedAsOftenAsItMayBe_GoodAndOnceMoreRefused) {
  Bundle bundle(std::string("k\0", 2));
  Resource inner = add_array(bundle, {});
  for (int level = 0; level < 62; ++level) inner = add_array(bundle, {inner});
  EXPECT_EQ(outcome_of(bundle.bytes(add_table(bundle, inner))), "good");
  inner = add_array(bundle, {inner});
  EXPECT_EQ(outcome_of(bundle.bytes(add_table(bundle, inner))), "the bundle's tables are nested too deeply");
}

TEST(ResourceData, TableWithinItself_Refused) {
  Bundle bundle(std::string("k\0", 2));
  const Resource array = Bundle::make(ResourceType::kArray, bundle.here());
  add_array(bundle, {array});
  EXPECT_EQ(outcome_of(bundle.bytes(add_table(bundle, array))), "a table of the bundle is within itself");
}

/// Followed one by one these would be 2^60 values.
TEST(ResourceData, EachTableTwiceInTheNext_EachIsLookedAtOnce) {
  Bundle bundle(std::string("k\0", 2));
  Resource inner = add_array(bundle, {});
  for (int level = 0; level < 60; ++level) inner = add_array(bundle, {inner, inner});
  const ReadResource read = ResourceData::read(bundle.bytes(add_table(bundle, inner)));
  ASSERT_EQ(read.state, ReadResource::State::kGood);
  EXPECT_EQ(read.data->check(), nullptr);
}

/// Every word begins an array that goes to the end: half a million million values in a file of 4 MB.
TEST(ResourceData, ArraysThatOverlap_RefusedSoon) {
  Bundle bundle(std::string("k\0", 2));
  constexpr std::uint32_t kArrays = 1000000;
  const std::uint32_t first = bundle.here();
  for (std::uint32_t i = 0; i < kArrays; ++i)
    bundle.add(i % 2 == 0 ? kArrays - i - 1 : Bundle::make(ResourceType::kArray, first + i + 1));
  const std::clock_t begin = std::clock();
  EXPECT_NE(outcome_of(bundle.bytes(add_table(bundle, Bundle::make(ResourceType::kArray, first)))), "good");
  EXPECT_LT(std::clock() - begin, 5 * CLOCKS_PER_SEC);
}

/// Keys that are all the end of one: a million characters to compare for each of them.
TEST(ResourceData, KeysThatShareTheirBytes_RefusedSoon) {
  constexpr std::uint32_t kKeys = 500000;
  Bundle bundle(std::string(2 * kKeys, 'a') + '\0');
  const std::uint32_t table = bundle.here();
  bundle.add(kKeys);
  for (std::uint32_t i = 0; i < kKeys; ++i) bundle.add(Bundle::key(kKeys - i));
  for (std::uint32_t i = 0; i < kKeys; ++i) bundle.add(0);
  const std::clock_t begin = std::clock();
  EXPECT_EQ(outcome_of(bundle.bytes(Bundle::make(ResourceType::kTable32, table))), "parts of the bundle overlap");
  EXPECT_LT(std::clock() - begin, 20 * CLOCKS_PER_SEC);
}

TEST(ResourceData, KeysNotInOrderOrTwice_Refused) {
  for (const std::vector<std::uint32_t>& keys : {std::vector<std::uint32_t>{0, 2}, {0, 0}, {2, 2}}) {
    Bundle bundle(std::string("b\0a\0", 4));
    const std::uint32_t table = bundle.here();
    bundle.add(2);
    for (const std::uint32_t key : keys) bundle.add(Bundle::key(key));
    for (int i = 0; i < 2; ++i) bundle.add(0);
    EXPECT_EQ(outcome_of(bundle.bytes(Bundle::make(ResourceType::kTable32, table))),
              "the keys of a table are not in order");
  }
}

}  // namespace
}  // namespace qz_test
