// broken_program HOW: writes the file "result" and says so, and takes a failure in one of the ways that the judge has
// to find:
//   honest    says so on standard error, exit status 1
//   silent    exit status 1 without a text
//   careless  as if nothing had happened, with half of the result
//   crash     uses the memory that it did not get
//   hang      tries for ever
//   leftover  says so, but leaves its temporary file behind
//   child     says so, but leaves a process running
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr char kText[] = "a result that is long enough to be cut in two";

int fail_as(const std::string& how) {
  if (how == "careless") return 0;
  if (how == "crash") std::raise(SIGSEGV);
  while (how == "hang") pause();
  if (how == "child" && fork() == 0) {
    for (;;) pause();
  }
  if (how != "leftover") unlink("result.new");
  if (how != "silent") std::fputs("broken_program: cannot do it\n", stderr);
  return 1;
}

bool write_new_file() {
  void* const memory = std::malloc(100);
  if (memory == nullptr) return false;
  std::free(memory);
  const int file = open("result.new", O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return false;
  const bool written = write(file, kText, sizeof kText - 1) == static_cast<ssize_t>(sizeof kText - 1);
  return close(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string how = argc == 2 ? argv[1] : "honest";
  const bool is_new = write_new_file();
  const int status = is_new ? 0 : fail_as(how);
  if (status == 0 && std::rename("result.new", "result") != 0) return fail_as(how);
  if (status == 0) std::puts("done");
  return status;
}
