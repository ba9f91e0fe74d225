// What becomes of states that are damaged, of something else, or in use.
#include <gtest/gtest.h>

#include <string>

#include "tests/tools/ship/ship_fixture.h"

namespace qzlog_test {
namespace {

class ShipStateCommand : public ShipFixture {
 protected:
  ShipStateCommand() {
    append("logs/s.20261121.0001", lines(1, 3));
    EXPECT_EQ(ship_once().status, 0);
    append("logs/s.20261121.0001", lines(4, 5));
    state_ = read("state.json");
  }

  /// Nothing is delivered, and the state stays as it is.
  void expect_refusal(const std::string& words, const CommandResult& result) const {
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find(words), std::string::npos) << result.err;
    EXPECT_EQ(received().size(), 3U);
  }

  std::string state_;
};

TEST_F(ShipStateCommand, DamagedState_IsAnErrorWithTheNextStepAndNothingIsSent) {
  for (const std::string& damaged :
       {std::string(), state_.substr(0, state_.size() / 2), state_ + " ",
        std::string(state_).replace(state_.find("offset"), 6, "offsat"), std::string(100, '\0')}) {
    write("state.json", damaged);
    expect_refusal("the state 'state.json' cannot be used: it ", ship_once());
    expect_refusal("or remove it: everything that the logs have is then delivered again", ship_once());
    EXPECT_EQ(read("state.json"), damaged);
  }
  write("state.json", state_);
  EXPECT_EQ(ship_once().status, 0);
  EXPECT_EQ(received().size(), 5U);
}

TEST_F(ShipStateCommand, StateOfAnotherSeries_IsAnErrorThatNamesIt) {
  append("logs/t.20261121.0001", line(9));
  expect_refusal("the state is of the series '" + folder_.path("logs/s") + "', which is not named here",
                 run("$QZLOG ship logs/t --once --state state.json --to " + url()));
  EXPECT_EQ(read("state.json"), state_);
}

TEST_F(ShipStateCommand, StateOfAnotherReceiver_IsAnErrorThatNamesIt) {
  std::filesystem::create_directory(folder_.path("elsewhere"));
  expect_refusal("the state 'state.json' is of another receiver, " + url(),
                 run("$QZLOG ship logs/s --once --state state.json --to file://$PWD/elsewhere"));
  EXPECT_EQ(read("state.json"), state_);
}

TEST_F(ShipStateCommand, ReplacedLog_IsAnErrorThatNamesTheFile) {
  write("logs/s.20261121.0001", lines(7, 12));
  expect_refusal("s.20261121.0001' is not the file that the state is of: it has no line h/1/2/3 that ends at byte ",
                 ship_once());
  write("logs/s.20261121.0001", line(1));
  expect_refusal("is not the file that the state is of", ship_once());
}

TEST_F(ShipStateCommand, DeletedFile_IsToldAndTheNextOneIsDelivered) {
  std::filesystem::remove(folder_.path("logs/s.20261121.0001"));
  append("logs/s.20261121.0004", lines(6, 8));
  const CommandResult result = ship_once();
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("qzlog: error: 2 files passed over (2 deleted); the first at "), std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find("s.20261121.0001' is gone; it was delivered up to byte "), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("2 files were deleted before being delivered"), std::string::npos) << result.err;
  EXPECT_EQ(received().size(), 6U);
}

TEST_F(ShipStateCommand, SecondShipper_IsRefusedWithTheFirstOnesProcess) {
  Shipper first(folder_.path(), arguments());
  EXPECT_TRUE(wait_for_received(5));
  const CommandResult result = ship_once();
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: another 'qzlog ship' (process " + std::to_string(first.process()) +
                            ") uses the state 'state.json': one at a time can; name another one with --state to "
                            "deliver to another receiver\n");
  EXPECT_EQ(first.end(), 0);
  EXPECT_EQ(ship_once().status, 0);
}

// The line that nobody takes has to be somewhere before the state says that it is settled.
TEST_F(ShipStateCommand, DeadLettersThatCannotBeWritten_EndItWithTheStateAsItWas) {
  append("logs/s.20261121.0001", "no JSON\n");
  const CommandResult result = ship_once("--dead-letters /dev/full");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("cannot write '/dev/full': No space left on device"), std::string::npos) << result.err;
  EXPECT_EQ(read("state.json"), state_);
  EXPECT_EQ(ship_once().status, 1);
  EXPECT_EQ(received().size(), 5U);
  EXPECT_NE(read("state.json.dead-letters.jsonl").find("no JSON"), std::string::npos);
}

TEST_F(ShipStateCommand, StateThatCannotBeWritten_EndsItBeforeAnythingIsSent) {
  const CommandResult result = run("$QZLOG ship logs/s --once --state none/state.json --to " + url());
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("cannot write 'none/state.json.lock'"), std::string::npos) << result.err;
  EXPECT_EQ(received().size(), 3U);
}

TEST_F(ShipStateCommand, UsualPlace_IsTheServicesFolderOrTheUsers) {
  EXPECT_EQ(run("STATE_DIRECTORY=$PWD/service $QZLOG ship logs/s --once --to " + url()).status, 0);
  EXPECT_EQ(run("env -u STATE_DIRECTORY XDG_STATE_HOME=$PWD/user $QZLOG ship logs/s --once --to " + url()).status, 0);
  EXPECT_EQ(run("ls service/ship-????????????????.json user/qzlog/ship-????????????????.json").status, 0);
  const CommandResult nowhere =
      run("env -u STATE_DIRECTORY -u XDG_STATE_HOME -u HOME $QZLOG ship logs/s --to " + url());
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_NE(nowhere.err.find("name a file with --state"), std::string::npos) << nowhere.err;
}

}  // namespace
}  // namespace qzlog_test
