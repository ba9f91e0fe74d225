#include "tools/compiler/model/sensitivity.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

using qzlog::Sensitivity;

TEST(Sensitivity, Names_LeadBackToTheirValues) {
  for (const std::string_view name : all_sensitivity_names())
    EXPECT_EQ(sensitivity_name(*find_sensitivity(name)), name);
  EXPECT_EQ(find_sensitivity("drop"), Sensitivity::kDrop);
  EXPECT_FALSE(find_sensitivity("Drop"));
  EXPECT_FALSE(find_sensitivity(""));
}

TEST(Sensitivity, UnknownMark_CountsAsDrop) {
  EXPECT_EQ(sensitivity_of_mark(1), Sensitivity::kHash);
  EXPECT_EQ(sensitivity_of_mark(2), Sensitivity::kDrop);
  EXPECT_EQ(sensitivity_of_mark(3), Sensitivity::kDrop);
  EXPECT_EQ(sensitivity_of_mark(0xFFFFFFFF), Sensitivity::kDrop);
}

TEST(Sensitivity, TextsAlone_CanBeHashed) {
  for (int code = TypeUnknown; code <= TypeGUID; ++code) {
    const auto type = static_cast<qz_AttributeType>(code);
    EXPECT_EQ(can_be_hashed(type), code >= 9 && code <= 20) << code;
  }
}

}  // namespace
}  // namespace qzlog_compiler
