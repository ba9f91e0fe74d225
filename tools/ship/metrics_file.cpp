#include "tools/ship/metrics_file.h"

#include <iostream>
#include <utility>

#include "tools/report/command_message.h"
#include "tools/ship/own_file.h"

namespace qzlog_tool {

namespace {

constexpr std::chrono::seconds kEach{1};

volatile std::sig_atomic_t is_requested = 0;

void request(int /*signal*/) { is_requested = 1; }

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
  // What a host that ends makes of it does not matter: the next start writes another one.
  const std::string fault = replace_own_file(path_, text_(), 0644, OnDisk::kWhenever);
  if (!fault.empty() && !told_failure_) {
    print_command_message(qzlog_compiler::Severity::kWarning, "cannot write the metrics to '" + path_ + "': " + fault);
  }
  told_failure_ = !fault.empty();
}

}  // namespace qzlog_tool
