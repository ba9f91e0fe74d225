#include "tools/ship/metrics_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>
#include <string_view>
#include <utility>

#include "tools/report/command_message.h"
#include "tools/ship/own_file.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::chrono::seconds kEach{1};

volatile std::sig_atomic_t is_requested = 0;

void request(int /*signal*/) { is_requested = 1; }

/// A log that was named by mistake would be gone.
void refuse_other_content(const std::string& path) {
  constexpr std::string_view kBegin = R"({"qzlog_ship_metrics":)";
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  struct stat status = {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) return;
  char begin[kBegin.size()];
  const ssize_t count = ::pread(file.get(), begin, sizeof begin, 0);
  if (count == static_cast<ssize_t>(kBegin.size()) && std::string_view(begin, sizeof begin) == kBegin) return;
  throw CommandError(kExitCannotRun, "'" + path +
                                         "' has no metrics in it: name a file with --metrics that may be "
                                         "replaced");
}

}  // namespace

MetricsFile::MetricsFile(std::string path, std::function<std::string()> text)
    : path_(std::move(path)), text_(std::move(text)) {
  refuse_other_content(path_);
  struct sigaction action = {};
  action.sa_handler = request;
  ::sigaction(SIGUSR1, &action, &former_);
}

MetricsFile::~MetricsFile() { ::sigaction(SIGUSR1, &former_, nullptr); }

void MetricsFile::update(bool is_last) {
  const bool is_asked = is_requested != 0;
  is_requested = 0;
  if (path_.empty()) {
    if (is_asked) std::cerr << text_();
  } else if (is_asked || is_last || Clock::now() >= next_) {
    write_file();
  }
}

void MetricsFile::write_file() {
  next_ = Clock::now() + kEach;
  // What a host that ends makes of it does not matter: the next start writes another one.
  const std::string fault = replace_own_file(path_, text_(), 0644, OnDisk::kWhenever);
  if (!fault.empty() && !told_failure_) {
    print_command_message(qzlog_compiler::Severity::kWarning, "cannot write the metrics to '" + path_ + "': " + fault);
  }
  told_failure_ = !fault.empty();
}

}  // namespace qzlog_tool
