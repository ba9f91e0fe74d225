// `qzlog ship` to servers of NATS that fail in every way: what was written is what the stream holds, each line once.
#include <sys/mount.h>

#include "tests/tools/ship/nats_fixture.h"

namespace qzlog_test {
namespace {

const std::vector<std::string> kCreate = {"--option", "create=yes"};

class NatsFaults : public NatsFixture {};

TEST_F(NatsFaults, ServerKilledEachSecond_EveryLineOnce) {
  ship_meanwhile(nats_url(), kCreate, [&] {
    for (int round = 0; round < quick_or_long(3, 60); ++round) {
      pass(750);
      server_->stop();
      pass(250);  // what is sent meanwhile gets lost: the server has not read it
      server_->kill();
      ASSERT_TRUE(server_->start());
    }
  });
}

TEST_F(NatsFaults, ServerAway_IsWaitedFor) {
  ship_meanwhile(nats_url(), {"--option", "create=yes", "--option", "window=600"}, [&] {
    pass(300);
    server_->kill();
    pass(quick_or_long(2000, 120000));
    ASSERT_TRUE(server_->start());
  });
}

TEST_F(NatsFaults, ServerStandsStill_EveryLineOnce) {
  ship_meanwhile(nats_url(), {"--option", "create=yes", "--option", "window=600"}, [&] {
    pass(300);
    server_->stop();
    pass(quick_or_long(2000, 120000));
    server_->go_on();
  });
}

TEST_F(NatsFaults, SlowServer_EveryLineOnce) {
  ship_meanwhile(nats_url(), kCreate, [&] {
    for (int round = 0; round < quick_or_long(30, 600); ++round) {
      server_->stop();
      pass(45);
      server_->go_on();
      pass(5);
    }
  });
}

/// The server keeps what it stores on a disk of its own, on which there is little room.
class NatsFullDisk : public NatsFixture {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    const std::string disk = folder_.path("disk");
    std::filesystem::create_directory(disk);
    has_disk_ = ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=16m") == 0;
    if (!has_disk_) GTEST_SKIP() << "mounting a disk needs root";
    write("nats.conf", "jetstream { max_file_store: 1GB }\n");  // more than there is: it does not look by itself then
    server_ = std::make_unique<qz_test::NatsServer>(
        disk + "/nats", std::vector<std::string>{"-c", folder_.path("nats.conf")}, qz_test::NatsServer::free_port());
    ASSERT_TRUE(server_->start()) << read("disk/nats.log");
  }
  ~NatsFullDisk() override {
    server_.reset();
    if (has_disk_) ::umount2(folder_.path("disk").c_str(), MNT_DETACH);
  }
  /// What else is there leaves so much room.
  void leave_room(std::uintmax_t bytes) const {
    const std::uintmax_t there = std::filesystem::space(folder_.path("disk")).available;
    ASSERT_GT(there, bytes);
    write("disk/others", std::string(there - bytes, '\0'));
  }
  bool is_full() const { return std::filesystem::space(folder_.path("disk")).available < 16 * 1024; }

 private:
  bool has_disk_ = false;
};

TEST_F(NatsFullDisk, ShippersWaitForRoom_EveryLineOnce) {
  ship_meanwhile(nats_url(), {"--option", "create=yes", "--option", "window=600"}, [&] {
    ASSERT_TRUE(wait_until([&] { return folder_.has("state.json"); }));
    for (int round = 0; round < quick_or_long(1, 10); ++round) {
      leave_room(256 * 1024);
      EXPECT_TRUE(wait_until([&] { return is_full(); }));
      pass(500);
      std::filesystem::remove(folder_.path("disk/others"));
      server_->kill();  // it stores nothing any more until it is started anew
      ASSERT_TRUE(server_->start());
      pass(500);
    }
  });
  EXPECT_NE(read("said"), "") << "that the stream takes nothing is told";
}

TEST_F(NatsFaults, ShipperKilled_EveryLineOnce) {
  const int written = write_meanwhile([&] {
    for (int round = 0; round < quick_or_long(10, 300); ++round) {
      Shipper shipper(folder_.path(), nats_arguments(nats_url(), kCreate));
      pass(20 + round * 37 % 200);
      shipper.send(SIGKILL);
      EXPECT_EQ(shipper.wait(), -SIGKILL) << read("said");
    }
  });
  EXPECT_EQ(ship_to(nats_url(), "--option create=yes").err, "");
  expect_all(stored(server_->address()), written);
}

/// The server in a network namespace of its own, behind a pair of interfaces.
class NatsNetwork : public NatsFixture {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    made_ = run("ip netns add " + name_).status == 0;
    if (!made_) GTEST_SKIP() << "network namespaces need root, and iproute2";
    const CommandResult result =
        run("ip link add " + name_ + "a type veth peer name " + name_ + "b netns " + name_ + " && ip addr add " +
            here_ + "/30 dev " + name_ + "a && ip link set " + name_ + "a up && ip -n " + name_ + " addr add " +
            there_ + "/30 dev " + name_ + "b && ip -n " + name_ + " link set " + name_ + "b up");
    ASSERT_EQ(result.status, 0) << result.err;
    server_ =
        std::make_unique<qz_test::NatsServer>(folder_.path("nats"), std::vector<std::string>{"-js"}, 4222, there_);
    server_->move_to(name_);
    ASSERT_TRUE(server_->start()) << read("nats.log");
  }
  ~NatsNetwork() override {
    server_.reset();
    if (made_) run("ip netns del " + name_);
  }
  void set_link(const std::string& state) const {
    EXPECT_EQ(run("ip -n " + name_ + " link set " + name_ + "b " + state).status, 0);
  }

 private:
  std::string name_ = "qz" + std::to_string(::getpid());
  // Of the networks that are for tests between networks.
  std::string network_ = "198.18." + std::to_string(::getpid() % 256) + '.';
  std::string here_ = network_ + '1';
  std::string there_ = network_ + '2';
  bool made_ = false;
};

TEST_F(NatsNetwork, CutAndMended_EveryLineOnce) {
  const std::vector<std::string> options = {"--option", "create=yes", "--option", "window=600"};
  ship_meanwhile(nats_url(), options, [&] {
    pass(500);
    for (int round = 0; round < quick_or_long(1, 10); ++round) {
      set_link("down");
      pass(quick_or_long(2000, 15000));
      set_link("up");
      pass(1000);
    }
  });
}

class NatsCluster : public NatsFixture {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    std::vector<int> routes;
    for (int index = 0; index < 3; ++index) routes.push_back(qz_test::NatsServer::free_port());
    std::string list;
    for (const int port : routes) list += (list.empty() ? "" : ",") + route(port);
    for (std::size_t index = 0; index < routes.size(); ++index) {
      const std::string name = "n" + std::to_string(index);
      const std::vector<std::string> arguments = {
          "-js", "-n", name, "--cluster_name", "C", "--cluster", route(routes[index]), "--routes", list};
      servers_.push_back(
          std::make_unique<qz_test::NatsServer>(folder_.path(name), arguments, qz_test::NatsServer::free_port()));
      ASSERT_TRUE(servers_.back()->start()) << read(name + ".log");
    }
  }
  static std::string route(int port) { return "nats://127.0.0.1:" + std::to_string(port); }
  std::string cluster_url() const {
    return "nats://" + servers_[0]->address() + ',' + servers_[1]->address() + ',' + servers_[2]->address() + "/S";
  }

  std::vector<std::unique_ptr<qz_test::NatsServer>> servers_;
};

TEST_F(NatsCluster, OneOfThreeKilled_EveryLineOnce) {
  const std::vector<std::string> options = {"--option", "create=yes", "--option", "replicas=3"};
  ship_meanwhile(cluster_url(), options, [&] {
    ASSERT_TRUE(wait_until(
        [&] { return folder_.has("state.json") && read("state.json").find("identity") != std::string::npos; }));
    for (int round = 0; round < quick_or_long(1, 30); ++round) {
      qz_test::NatsServer& server = *servers_[static_cast<std::size_t>(round) % servers_.size()];
      server.kill();
      pass(1000);
      ASSERT_TRUE(server.start());
      pass(1500);  // long enough for it to catch up: two of three are needed
    }
  });
}

}  // namespace
}  // namespace qzlog_test
