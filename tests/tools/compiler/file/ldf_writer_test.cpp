#include "tools/compiler/file/ldf_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "tests/tools/compiler/example_model.h"

namespace qzlog_compiler {
namespace {

std::string hexadecimal(const std::string& bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15U];
    out += i % 16 == 15 ? '\n' : ' ';
  }
  return out;
}

TEST(WriteLdf, ExampleModel_GivesTheBytesOfTheFormat) {
  EXPECT_EQ(hexadecimal(write_ldf(example_model())), hexadecimal(example_bytes()));
}

TEST(WriteLdf, EmptyModel_IsAHeaderWithEmptyRegionsBehindIt) {
  const std::string bytes = write_ldf({});
  EXPECT_EQ(bytes.size(), 128U);
  EXPECT_EQ(bytes.substr(0, 4), ".LDF");
  EXPECT_EQ(bytes.substr(40, 20), "\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0\0\0\0\0\x80"sv);
}

TEST(WriteLdf, VersionOfEightBytes_FillsTheTag) {
  DefinitionModel model;
  model.version = "1234.567";
  EXPECT_EQ(write_ldf(model).substr(16, 12), "1234.567\0\0\0\0"sv);
}

TEST(WriteLdf, OrderOfEntries_ChangesNothing) {
  DefinitionModel model = example_model();
  std::reverse(model.entries.begin(), model.entries.end());
  EXPECT_EQ(write_ldf(model), example_bytes());
}

template <typename Change>
void expect_length_error(Change change, const char* text) {
  DefinitionModel model = example_model();
  change(model);
  try {
    write_ldf(model);
    FAIL() << "no exception";
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), text);
  }
}

TEST(WriteLdf, CountsOver255_AreRefused) {
  expect_length_error([](DefinitionModel& model) { model.globals.resize(256); }, "more than 255 global attributes");
  expect_length_error([](DefinitionModel& model) { model.entries[0].attributes.resize(256); },
                      "more than 255 attributes in an entry");
  expect_length_error([](DefinitionModel& model) { model.entries[0].selector.messages.resize(256); },
                      "more than 255 selector messages in an entry");
  expect_length_error([](DefinitionModel& model) { model.version = "123456789"; }, "a version of more than 8 bytes");
}

}  // namespace
}  // namespace qzlog_compiler
