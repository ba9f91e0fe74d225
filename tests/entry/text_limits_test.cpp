#include "entry/text_limits.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

/// The number in the name of a type: "TypeMBChar2K" says 2048.
int number_in_name(const char* name) {
  const std::string text(name);
  const std::size_t digit = text.find_first_of("0123456789");
  const int number = std::atoi(text.c_str() + digit);
  return text.back() == 'K' ? number * 1024 : number;
}

TEST(TextLimits, EveryTextType_TheNumberInItsName) {
  for (int type = TypeChar32; type <= TypeMBChar2K; ++type) {
    const char* const name = _qz_LOG_get_attribute_type_string(static_cast<qz_AttributeType>(type));
    EXPECT_EQ(qzlog::text_limit(static_cast<unsigned char>(type)), number_in_name(name)) << name;
  }
}

}  // namespace
