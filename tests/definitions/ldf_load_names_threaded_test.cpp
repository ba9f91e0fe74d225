#include <atomic>
#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "tests/definitions/table_test.h"
#include "tests/support/names_section.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h
using qzlog::KnownName;
using qzlog::Sensitivity;

using LdfNamesThreads = TableTest;

TEST_F(LdfNamesThreads, FirstQuestionsAtOnceAndWhileTheFileIsCleared_AllAnswered) {
  constexpr int kThreads = 8;
  const LdfFile file{.globals = {{"USER", TypeChar32}},
                     .entries = {{.id = 7, .message_text = "m", .attributes = {{"Secret", TypeChar32}}}}};
  const std::string bytes =
      with_names(file.bytes(), {.events = {{7, {"FULL", ""}}}, .marks = {{{0, 0, "USER"}, 1}, {{1, 7, "Secret"}, 2}}});
  for (int round = 0; round < 50; ++round) {
    set_std_bytes(bytes);
    const auto held = table_.acquire_entry(7);
    std::barrier start(kThreads + 1);
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        right += held->get_event_name()->text() == std::string("FULL") &&
                 held->find_sensitivity(KnownName::of("Secret")) == Sensitivity::kDrop &&
                 held->find_sensitivity(KnownName::of("USER")) == Sensitivity::kHash;
      });
    }
    start.arrive_and_wait();
    table_.clear();
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(right, kThreads);
  }
}

}  // namespace
