#include "ship/file/group_state.h"

#include <gtest/gtest.h>

namespace qzlog_ship {
namespace {

TEST(GroupState, Text_ReadsBack) {
  const GroupState state{900, 31, {{2, 100, 300, 5}, {0, 300, 400, 9}}};
  EXPECT_EQ(state.text(), "qzlog group 1\nnext 900 31\nclaim 2 100 300 5\nclaim 0 300 400 9\nend\n");
  EXPECT_EQ(GroupState::parse(state.text()), state);
  EXPECT_EQ(GroupState::parse(GroupState().text()), GroupState());
}

TEST(GroupState, EveryPartOfAText_IsRefused) {
  const std::string text = GroupState{900, 31, {{2, 100, 300, 5}}}.text();
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_FALSE(GroupState::parse(text.substr(0, size))) << size;
  EXPECT_FALSE(GroupState::parse(text + "\n"));
}

TEST(GroupState, WhatCannotBe_IsRefused) {
  for (const char* const line : {"claim 1 5 5 1", "claim 1 7 5 1", "claim 1 5 901 1", "claim 1 5 7 31", "claim 1 5 7",
                                 "claim -1 5 7 1", "claim 1 5 7 1 ", "claim 99999999999 5 7 1", "other"}) {
    EXPECT_FALSE(GroupState::parse(std::string("qzlog group 1\nnext 900 31\n") + line + "\nend\n")) << line;
  }
  EXPECT_FALSE(GroupState::parse("qzlog group 2\nnext 900 31\nend\n"));
  EXPECT_FALSE(GroupState::parse("qzlog group 1\nnext 99999999999999999999 31\nend\n"));
}

}  // namespace
}  // namespace qzlog_ship
