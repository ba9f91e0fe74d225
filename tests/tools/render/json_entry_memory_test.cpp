// In a program of its own: the allocations that fail replace operator new, which then asks no handler.
#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/allocation_failure.h"
#include "tools/render/entry_error.h"
#include "tools/render/json_entry.h"

namespace {

using qzlog_tool::EntryError;
using qzlog_tool::EntryRule;
using qzlog_tool::JsonEntryParser;

constexpr std::string_view kLine = R"({"id":1001,"attributes":{"Name":"a\tb"}})";

/// The error of the line, none where it is read. Without the short cut: the parser keeps what it once allocated.
std::optional<EntryRule> error_of(JsonEntryParser& parser, std::string_view line) {
  try {
    parser.parse_any(line);
    return std::nullopt;
  } catch (const EntryError& error) {
    return error.rule;
  }
}

TEST(JsonEntryMemory, FailingOnce_IsAnErrorOfTheLineAndTheNextIsRead) {
  const std::string padded = std::string(kLine) + std::string(simdjson::SIMDJSON_PADDING, ' ');
  const std::string_view line = std::string_view(padded).substr(0, kLine.size());
  unsigned nth = 1;
  for (bool failed = true; failed; ++nth) {
    JsonEntryParser parser;
    std::optional<EntryRule> error;
    {
      const qz_test::AllocationFailure failure(nth);
      error = error_of(parser, line);
      failed = failure.happened();
    }
    EXPECT_EQ(error, failed ? std::optional(EntryRule::kOutOfMemory) : std::nullopt) << nth;
    EXPECT_EQ(error_of(parser, line), std::nullopt) << nth;
  }
  EXPECT_GT(nth, 4u);
}

}  // namespace
