#include "tools/ship/metrics_file.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <utility>

#include "tools/report/command_message.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::chrono::seconds kEach{1};

volatile std::sig_atomic_t is_requested = 0;

void request(int /*signal*/) { is_requested = 1; }

/// 0, or an errno. What a host that ends makes of it does not matter: the next start writes another one.
int replace(const std::string& path, const std::string& content) {
  const std::string written = path + ".new";
  FileDescriptor file(open_path(written, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (file.get() < 0) return errno;
  int error = write_all(file.get(), content.data(), content.size());
  const int closed = file.close();
  if (error == 0) error = closed;
  if (error == 0 && ::rename(written.c_str(), path.c_str()) != 0) error = errno;
  return error;
}

}  // namespace

MetricsFile::MetricsFile(std::string path, std::function<std::string()> text)
    : path_(std::move(path)), text_(std::move(text)) {
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
  const int error = replace(path_, text_());
  if (error != 0 && !told_failure_) {
    print_command_message(qzlog_compiler::Severity::kWarning,
                          "cannot write the metrics to '" + path_ + "': " + std::strerror(error));
  }
  told_failure_ = error != 0;
}

}  // namespace qzlog_tool
