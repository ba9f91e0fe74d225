#include "foundation/no_copies.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

struct Derived : qz_UTIL_no_inadvertant_copies {
  int value = 7;
};

TEST(NoInadvertantCopies, DerivedClass_CanBeMadeButNotCopied) {
  static_assert(std::is_empty_v<qz_UTIL_no_inadvertant_copies>);
  static_assert(!std::is_polymorphic_v<qz_UTIL_no_inadvertant_copies>);
  static_assert(!std::is_copy_constructible_v<Derived> && !std::is_copy_assignable_v<Derived>);
  static_assert(!std::is_move_constructible_v<Derived> && !std::is_move_assignable_v<Derived>);
  const Derived object;
  EXPECT_EQ(object.value, 7);
}

}  // namespace
