#include "tools/ship/ship_state.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_tool {
namespace {

ShipState example() {
  return {"nats://h/E",
          {{"/var/log/a/s", {{{20261121, 1}, 0, ""}, {{20261121, 9999}, 12345678901, "h/1/2/3"}}},
           {"/s\"\n", {{{20261122, 7}, 1, "x%20y/1"}}}}};
}

TEST(ShipStateTest, Text_HasWhatIsNeededAndReadsBack) {
  const std::string text = state_text(example());
  EXPECT_EQ(parse_state(text), example());
  const std::string shown = state_text({"file:///x", {{"/l/s", {{{20261121, 2}, 5, "h/1/2/3"}}}}});
  EXPECT_EQ(shown.substr(0, shown.find("\"checksum\"")),
            "{\n  \"qzlog_ship\": 1,\n  \"to\": \"file:///x\",\n  \"places\": [\n"
            "    {\"series\": \"/l/s\", \"file\": \"s.20261121.0002\", \"offset\": 5, \"identity\": \"h/1/2/3\"}\n"
            "  ],\n  ");
  EXPECT_EQ(parse_state(state_text({"file:///x", {}})), (ShipState{"file:///x", {}}));
}

TEST(ShipStateTest, EveryPrefixAndEveryChangedByte_IsRefused) {
  const std::string text = state_text(example());
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_THROW(parse_state(text.substr(0, size)), BadState) << size;
  }
  qz_test::SeededRandom random;
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string changed = text;
    changed[at] = static_cast<char>(changed[at] ^ (1 << random.below(8)));
    EXPECT_THROW(parse_state(changed), BadState) << at;
  }
  EXPECT_THROW(parse_state(text + text), BadState);
}

TEST(ShipStateTest, Reasons_SayWhatIsWrong) {
  const auto reason = [](const std::string& text) {
    try {
      parse_state(text);
    } catch (const BadState& fault) {
      return std::string(fault.what());
    }
    return std::string();
  };
  EXPECT_EQ(reason(""), "it is empty");
  EXPECT_EQ(reason("{}"), "it has no checksum at its end");
  std::string changed = state_text(example());
  changed.replace(changed.find("12345678901"), 11, "12345678902");
  EXPECT_EQ(reason(changed), "it does not have its checksum: it was changed, or damaged");
}

}  // namespace
}  // namespace qzlog_tool
