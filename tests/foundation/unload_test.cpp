// A program that does not link the library opens it by way of a plug-in and closes that while threads live that used
// it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ldf_file.h"
#include "tests/support/temp_dir.h"

namespace qz_test {
namespace {

using RenderOne = bool (*)(const char* definitions, const char* wanted);

bool is_loaded(const char* name) {
  void* const handle = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

TEST(Unload, PluginClosedWhileThreadsLive_TheyEndUnharmed) {
  const TempDir folder;
  const LdfFile file{.tag = "1.0", .entries = {{.id = 1, .message_text = "The time is %_%TIMESTAMP%"}}};
  const std::string definitions = folder.write("std.ldf", file.bytes());
  for (int round = 0; round < 3; ++round) {
    void* const plugin = dlopen(QZLOG_UNLOAD_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(plugin, nullptr) << dlerror();
    const auto render_one = reinterpret_cast<RenderOne>(dlsym(plugin, "render_one"));
    ASSERT_NE(render_one, nullptr);
    ASSERT_TRUE(render_one(definitions.c_str(), "The time is "));
    std::atomic<int> used{0};
    std::atomic<bool> closed{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        EXPECT_TRUE(render_one(definitions.c_str(), "The time is "));
        ++used;
        closed.wait(false);
      });
    }
    while (used < 4) std::this_thread::yield();
    EXPECT_EQ(dlclose(plugin), 0);
    EXPECT_FALSE(is_loaded(QZLOG_UNLOAD_PLUGIN));
    EXPECT_TRUE(is_loaded("libqzlog.so.1"));
    closed = true;
    closed.notify_all();
    for (std::thread& thread : threads) thread.join();
  }
}

}  // namespace
}  // namespace qz_test
