#include "tools/inspect/ldf_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <streambuf>

#include "tests/support/ldf_file.h"
#include "tests/support/resource_limit.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tests/tools/inspect/ldf_forms.h"
#include "tools/compiler/file/ldf_writer.h"

namespace qzlog_compiler {
namespace {

using nlohmann::json;

TEST(WriteJson, ExampleFile_HasEverything) {
  const json file = json::parse(json_of(example_bytes()));
  EXPECT_EQ(file["file_size"], example_bytes().size());
  EXPECT_EQ(file["header"]["version"], "2.5");
  EXPECT_EQ(file["globals"], json::parse(R"([{"offset":128,"name":"HOST","type":"MBChar64","type_code":16,
                                              "redirect":""}])"));
  EXPECT_EQ(file["entry_map"], json::parse(R"([{"offset":145,"id":7,"record_offset":161},
                                               {"offset":153,"id":16909060,"record_offset":240}])"));
  EXPECT_EQ(file["entries"][0], json::parse(R"({"offset":161,"size":79,"id":7,"word":9,"mask":5,"message_id":"m",
      "message":"%d%R%","selector":"R",
      "attributes":[{"offset":199,"name":"R","type":"UInt2","type_code":4,"redirect":"r"}],
      "selector_messages":[{"offset":219,"index":1,"value":16,"message_id":"s","message":"é"}]})"));
  EXPECT_EQ(file["entries"].size(), 2U);
  EXPECT_EQ(file["qzlog"], 1);
  EXPECT_EQ(file["findings"], json::array());
  EXPECT_EQ(file["damage_count"], 0);
}

TEST(WriteJson, OddTexts_HaveTheirBytesBesides) {
  qz_test::LdfFile file{.entries = {{.id = 3, .message_id = "caf\xE9", .message_text = "abcd"}}};
  std::string bytes = file.bytes();
  bytes[bytes.find("abcd") + 1] = '\0';
  const json entry = json::parse(json_of(bytes))["entries"][0];
  EXPECT_EQ(entry["message_id"], "caf\uFFFD");
  EXPECT_EQ(entry["message_id_hex"], "636166E900");
  EXPECT_EQ(entry["message"], "a");
  EXPECT_EQ(entry["message_hex"], "6100636400");
  EXPECT_FALSE(entry.contains("selector_hex"));
}

TEST(WriteJson, DamagedRecord_HasWhatCanBeReadAndTheReason) {
  const json file = json::parse(json_of(qz_test::with_int4(example_bytes(), 0xA1 + 12, 0xFFFFFFFF)));
  const json& entry = file["entries"][0];
  EXPECT_EQ(entry["mask"], 5);
  EXPECT_FALSE(entry.contains("message_id"));
  EXPECT_EQ(entry["damage"]["offset"], 177);
  EXPECT_EQ(entry["damage"]["reason"], "the file ends within an entry record");
  EXPECT_EQ(file["damage_count"], 1);
  EXPECT_EQ(file["entries"][1]["id"], 16909060);
}

/// Counts what it is given and keeps nothing.
class Counter : public std::streambuf {
 public:
  std::streamsize count() const { return count_; }

 private:
  int_type overflow(int_type byte) override {
    ++count_;
    return byte;
  }
  std::streamsize xsputn(const char*, std::streamsize count) override {
    count_ += count;
    return count;
  }

  std::streamsize count_ = 0;
};

/// One record can be the whole file, and a hundred bytes of the result can come of twelve.
TEST(WriteJson, EnormousLists_TakeNoMemoryOfTheirOwn) {
  constexpr std::size_t kMany = 200000;
  const std::vector<qz_test::LdfAttribute> attributes(kMany, {"", 255});
  const std::vector<qz_test::LdfSelectorMessage> messages(kMany, {1, 2, "", "\xFF"});
  const std::string text(2 * kMany, '\xFF');
  for (const qz_test::LdfFile& file :
       {qz_test::LdfFile{.entries = {{.id = 3, .attributes = attributes}}},
        qz_test::LdfFile{.entries = {{.id = 3, .selector_messages = messages}}},
        qz_test::LdfFile{.globals = attributes}, qz_test::LdfFile{.entries = {{.id = 3, .message_text = text}}}}) {
    const std::string bytes = file.bytes();
    Counter counter;
    std::ostream out(&counter);
    const qz_test::AddressSpaceLimit limit(1 << 20);
    ASSERT_NO_THROW(write_json(LdfSurvey(bytes), {}, out));
    EXPECT_GT(counter.count(), 8 * static_cast<std::streamsize>(kMany));
  }
}

TEST(WriteJson, RepeatedTexts_EachHasItsBytes) {
  const std::string text(100000, '\xFF');
  qz_test::LdfFile file{.entries = {{.id = 3, .message_id = text, .message_text = text}}};
  const json entry = json::parse(json_of(file.bytes()))["entries"][0];
  std::string replaced;
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    replaced += "\uFFFD";
    bytes += "FF";
  }
  EXPECT_TRUE(entry["message"] == replaced);
  EXPECT_TRUE(entry["message_id_hex"] == bytes + "00");
}

TEST(WriteJson, AnyFile_IsWellFormed) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 1000; ++round) {
    const std::string whole = random_file(maker, random);
    const std::string bytes =
        random.one_in(2)
            ? damaged(whole, random)
            : whole.substr(0, static_cast<std::size_t>(random.between(0, static_cast<long long>(whole.size()))));
    ASSERT_NO_THROW(EXPECT_TRUE(json::parse(json_of(bytes)).contains("damage_count")));
  }
}

}  // namespace
}  // namespace qzlog_compiler
