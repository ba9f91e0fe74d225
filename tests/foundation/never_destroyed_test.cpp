#include "foundation/never_destroyed.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

using namespace qzlog;

namespace {

struct Counted {
  Counted(int* destroyed_count, std::string text) : destroyed(destroyed_count), name(std::move(text)) {}
  ~Counted() { ++*destroyed; }
  int* destroyed;
  std::string name;
};

TEST(NeverDestroyed, AtItsEnd_NoDestructor) {
  int destroyed = 0;
  {
    NeverDestroyed<Counted> object(&destroyed, "short");
    EXPECT_EQ(object->name, "short");
    EXPECT_EQ((*object).name, object.get()->name);
  }
  EXPECT_EQ(destroyed, 0);
  static_assert(std::is_trivially_destructible_v<NeverDestroyed<Counted>>);
}

TEST(NeverDestroyed, Type_CannotBeCopiedAndHasItsObjectsSizeAndAlignment) {
  struct alignas(64) Aligned {
    char bytes[64];
  };
  static_assert(!std::is_copy_constructible_v<NeverDestroyed<std::string>>);
  static_assert(sizeof(NeverDestroyed<Aligned>) == sizeof(Aligned));
  static_assert(alignof(NeverDestroyed<Aligned>) == alignof(Aligned));
  SUCCEED();
}

}  // namespace
