#include "foundation/counted_ref.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

using namespace qzlog;

namespace {

struct Counted {
  void add_reference() { ++references; }
  void release() { --references; }
  int references = 1;
};
using Ref = CountedRef<Counted>;

static_assert(!std::is_copy_constructible_v<Ref> && !std::is_copy_assignable_v<Ref>);
static_assert(std::is_nothrow_move_constructible_v<Ref> && std::is_nothrow_move_assignable_v<Ref>);

TEST(CountedRef, DefaultMade_Null) {
  const Ref ref;
  EXPECT_FALSE(ref);
  EXPECT_EQ(ref.get(), nullptr);
}

TEST(CountedRef, TakenOverAndDestroyed_OneReferenceReleased) {
  Counted object;
  {
    const Ref ref(&object);
    EXPECT_TRUE(ref);
    EXPECT_EQ(ref.get(), &object);
    EXPECT_EQ(ref->references, 1);
  }
  EXPECT_EQ(object.references, 0);
}

TEST(CountedRef, Shared_OneReferenceMoreWhileItLives) {
  Counted object;
  {
    const Ref ref = Ref::share(&object);
    const Ref other = Ref::share(ref.get());
    EXPECT_EQ(object.references, 3);
  }
  EXPECT_EQ(object.references, 1);
}

TEST(CountedRef, NullTakenOver_NothingReleased) {
  const Ref ref(static_cast<Counted*>(nullptr));
  EXPECT_FALSE(ref);
}

TEST(CountedRef, MovedFrom_NullAndNothingReleased) {
  Counted object;
  {
    Ref from(&object);
    const Ref to(std::move(from));
    EXPECT_EQ(from.get(), nullptr);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(to.get(), &object);
    EXPECT_EQ(object.references, 1);
  }
  EXPECT_EQ(object.references, 0);
}

TEST(CountedRef, MoveAssigned_FormerReleasedWhenTheSourceEnds) {
  Counted first;
  Counted second;
  Ref to(&first);
  to = Ref(&second);
  EXPECT_EQ(to.get(), &second);
  EXPECT_EQ(first.references, 0);
  EXPECT_EQ(second.references, 1);
  to = {};
  EXPECT_FALSE(to);
  EXPECT_EQ(second.references, 0);
}

TEST(CountedRef, MoveAssignedToItself_Unchanged) {
  Counted object;
  Ref ref(&object);
  Ref& same = ref;
  ref = std::move(same);
  EXPECT_EQ(ref.get(), &object);
  EXPECT_EQ(object.references, 1);
}

TEST(CountedRef, SameObjectAssigned_OneReferenceLeft) {
  Counted object;
  {
    Ref ref(&object);
    ref = Ref::share(&object);
    EXPECT_EQ(ref.get(), &object);
    EXPECT_EQ(object.references, 1);
  }
  EXPECT_EQ(object.references, 0);
}

TEST(CountedRef, ManyInAContainer_AllReleased) {
  Counted object;
  {
    std::vector<Ref> refs;
    for (int i = 0; i < 100; ++i) refs.push_back(Ref::share(&object));
    refs.erase(refs.begin(), refs.begin() + 30);
    EXPECT_EQ(object.references, 71);
  }
  EXPECT_EQ(object.references, 1);
}

}  // namespace
