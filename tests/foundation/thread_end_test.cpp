#include "foundation/thread_end.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <vector>

#include "tests/foundation/after_thread_end.h"

using namespace qzlog;

namespace qz_test {
namespace {

/// Writes its name into a record when it is released.
struct Named : ThreadEnd::Duty {
  Named(char letter, std::string& into) : Duty{&write, nullptr}, name(letter), record(into) {}
  static void write(Duty* duty) noexcept {
    auto* const self = static_cast<Named*>(duty);
    self->record += self->name;
    self->record += ThreadEnd::is_over() ? "" : "?";
    self->record += ThreadEnd::add(self) ? "!" : "";
  }
  char name;
  std::string& record;
};

TEST(ThreadEnd, Duties_ReleasedWhenTheThreadEndsTheLatestFirst) {
  std::string record;
  std::vector<Named> duties = {{'a', record}, {'b', record}, {'c', record}};
  in_thread([&] {
    for (Named& duty : duties) EXPECT_TRUE(ThreadEnd::add(&duty));
    EXPECT_FALSE(ThreadEnd::is_over());
    EXPECT_EQ(record, "");
  });
  EXPECT_EQ(record, "cba");
}

TEST(ThreadEnd, EachThread_ItsOwn) {
  std::string record;
  Named outer('o', record);
  Named inner('i', record);
  in_thread([&] {
    EXPECT_TRUE(ThreadEnd::add(&outer));
    in_thread([&] { EXPECT_TRUE(ThreadEnd::add(&inner)); });
    EXPECT_EQ(record, "i");
  });
  EXPECT_EQ(record, "io");
}

TEST(ThreadEnd, AfterTheEnd_OverAndNothingAdded) {
  std::string record;
  Named duty('a', record);
  Named late('z', record);
  AfterThreadEnd after([&] {
    EXPECT_TRUE(ThreadEnd::is_over());
    EXPECT_FALSE(ThreadEnd::add(&late));
  });
  in_thread([&] {
    EXPECT_TRUE(ThreadEnd::add(&duty));
    after.arm();
  });
  EXPECT_EQ(record, "a");
}

}  // namespace
}  // namespace qz_test
