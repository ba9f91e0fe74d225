// process_stress NAME ROUNDS: processes that fork and end while the library is at work. The file many.ldf has more
// events than the library keeps in memory, each with a message that says which event it is. Exit status 0 when every
// message was the right one and every process ended as it should; otherwise standard error says what happened how
// often.
#include <qzlog.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kEvents = 400;
constexpr int kChildren = 6;
constexpr unsigned kSecondsToHang = 10;
constexpr int kWrongMessage = 3;
constexpr int kException = 4;

using Random = std::minstd_rand;

// Never destroyed: threads read it while the process ends.
std::atomic<bool>& stop() {
  static auto* const flag = new std::atomic<bool>(false);
  return *flag;
}

// 0, or what was wrong.
int log_one(Random& random) {
  const unsigned id = 1 + static_cast<unsigned>(random() % kEvents);
  const std::string expected = "Event " + std::to_string(id) + " has happened 7 times";
  try {
    qz_LOG_LogEntry entry(id, 3);
    entry.AddAttrib4("Count", 7);
    return entry.FormatMessage() == expected ? 0 : kWrongMessage;
  } catch (const qz_EXCEPTION_base&) {
    return kException;
  }
}

int log_many(Random& random, int count) {
  for (int index = 0; index < count; ++index) {
    const int wrong = log_one(random);
    if (wrong != 0) return wrong;
  }
  return 0;
}

void log_until_stopped(unsigned seed, std::atomic<int>* wrong) {
  Random random(seed);
  while (!stop().load(std::memory_order_relaxed)) {
    const int result = log_one(random);
    if (result != 0) wrong->store(result);
  }
}

// What ended processes had to say.
class Endings {
 public:
  void add_child(int status) {
    if (WIFSIGNALED(status)) {
      ++counts_[WTERMSIG(status) == SIGALRM ? "hung" : "ended by signal " + std::to_string(WTERMSIG(status))];
    } else {
      add_result(WEXITSTATUS(status));
    }
  }
  void add_result(int result) {
    if (result != 0)
      ++counts_[result == kWrongMessage ? "wrong message" : result == kException ? "exception" : "other"];
  }
  // False when the child hung: the next one would too.
  bool wait_for(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) == child) add_child(status);
    return !WIFSIGNALED(status) || WTERMSIG(status) != SIGALRM;
  }
  bool report() const {
    for (const auto& [what, count] : counts_) std::fprintf(stderr, "%s: %d\n", what.c_str(), count);
    return counts_.empty();
  }

 private:
  std::map<std::string, int> counts_;
};

// A child that ends with the result of `work`, or by SIGALRM when it hangs.
template <typename Work>
pid_t start_child(Work work) {
  const pid_t child = fork();
  if (child < 0) std::abort();
  if (child == 0) {
    alarm(kSecondsToHang);
    _exit(work());
  }
  return child;
}

// The children and the parent share an open definition file.
void fork_and_read(int rounds, Endings& endings) {
  Random random(1);
  endings.add_result(log_many(random, 10));
  for (int round = 0; round < rounds; ++round) {
    std::vector<pid_t> children;
    for (unsigned index = 0; index < kChildren; ++index) {
      children.push_back(start_child([seed = random() + index] {
        Random own(static_cast<unsigned>(seed));
        return log_many(own, 300);
      }));
    }
    endings.add_result(log_many(random, 300));
    for (const pid_t child : children) endings.wait_for(child);
  }
}

// The children are forked at moments when other threads hold what they hold.
void fork_beside_threads(int rounds, Endings& endings) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 3; ++seed) threads.emplace_back(log_until_stopped, seed, &wrong);
  Random random(7);
  for (int round = 0; round < rounds; ++round) {
    const auto seed = static_cast<unsigned>(random());
    const pid_t child = start_child([seed] {
      Random own(seed);
      return log_many(own, 20);
    });
    if (!endings.wait_for(child)) break;
  }
  stop() = true;
  for (std::thread& thread : threads) thread.join();
  endings.add_result(wrong);
}

// A process whose main thread leaves while the others go on.
void exit_beside_threads(int rounds, Endings& endings) {
  for (int round = 0; round < rounds; ++round) {
    endings.wait_for(start_child([round]() -> int {
      static auto* const wrong = new std::atomic<int>(0);
      for (unsigned seed = 1; seed <= 3; ++seed) std::thread(log_until_stopped, seed, wrong).detach();
      Random random(static_cast<unsigned>(round));
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
      std::exit(*wrong);
    }));
  }
}

// Threads that end while others begin, with entries in both.
void end_threads(int rounds, Endings& endings) {
  for (int round = 0; round < rounds; ++round) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed) {
      threads.emplace_back([&wrong, seed = seed + static_cast<unsigned>(round)] {
        Random random(seed);
        const int result = log_many(random, 5);
        if (result != 0) wrong = result;
      });
    }
    for (std::thread& thread : threads) thread.join();
    endings.add_result(wrong);
  }
}

struct Stress {
  const char* name;
  void (*run)(int rounds, Endings& endings);
  bool icu;
  int debug_level;
};

constexpr Stress kStresses[] = {
    {"fork", fork_and_read, true, 0},
    {"fork-narrow", fork_and_read, false, 0},
    {"fork-threads", fork_beside_threads, true, 0},
    {"fork-threads-narrow", fork_beside_threads, false, 0},
    {"fork-threads-debug", fork_beside_threads, true, 3},
    {"exit-threads", exit_beside_threads, true, 0},
    {"exit-threads-narrow", exit_beside_threads, false, 0},
    {"end-threads", end_threads, true, 0},
};

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  for (const Stress& stress : kStresses) {
    if (argc != 3 || std::strcmp(stress.name, argv[1]) != 0) continue;
    qz_LOG_LogConfig::SetICUEnabled(stress.icu);
    qz_LOG_LogConfig::SetDefinitionPath("many.ldf");
    EnableDebugLog(stress.debug_level);
    Endings endings;
    stress.run(std::atoi(argv[2]), endings);
    return endings.report() ? 0 : 1;
  }
  return 2;
}
