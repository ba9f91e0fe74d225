#include "ship/file/file_reader.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "ship/plugin/plugin_call.h"

namespace {

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;

constexpr std::size_t kBlock = std::size_t{256} << 10;
constexpr int kLookMilliseconds = 50;

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }

qzlog_ship::RecordFileName file_of(const qzlog_settings& settings) {
  qzlog_ship::PluginOptions options(settings);
  qzlog_ship::RecordFileName file = qzlog_ship::RecordFileName::of(settings, options);
  options.refuse_others("keep");
  return file;
}

/// It becomes part of a file's name.
bool is_name(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '_';
  });
}

}  // namespace

qzlog_reader::qzlog_reader(const qzlog_settings& settings, const qzlog_start& start) : file_(file_of(settings)) {
  if (start.kind == QZLOG_FROM_TIME) fail_for_good("files do not know when a record came: begin with another one");
  open(start);
}

qzlog_reader::~qzlog_reader() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void qzlog_reader::open(const qzlog_start& start) {
  descriptor_ = ::open(file_.path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) {
    const std::string text = "cannot read '" + file_.path + "': " + std::strerror(errno);
    if (errno == ENOENT && start.follow != 0) fail_for_now(text);
    fail_for_good(text);
  }
  struct stat status = {};
  if (::fstat(descriptor_, &status) != 0) fail_for_good(std::strerror(errno));
  if (start.follow == 0) end_ = static_cast<std::uint64_t>(status.st_size);
  try {
    start.group != nullptr ? join(start) : skip_to(start);
  } catch (...) {
    ::close(descriptor_);
    throw;
  }
}

// Where a group begins is looked for by the first of its readers, and by nobody else while it does.
void qzlog_reader::join(const qzlog_start& start) {
  if (!is_name(start.group)) fail_for_good("the name of a group has letters, digits, '-' and '_'");
  group_ = std::make_unique<qzlog_ship::GroupReader>(file_, descriptor_, start.group, end_, [this, &start] {
    skip_to(start);
    return qzlog_ship::GroupState{position_ - (held_.size() - given_), sequence_ + 1};
  });
}

void qzlog_reader::settle(std::span<const std::uint64_t> tokens) {
  if (group_ != nullptr) group_->settle(tokens);
}

void qzlog_reader::skip_to(const qzlog_start& start) {
  const bool from_now = start.kind == QZLOG_FROM_NOW;
  if (!from_now && (start.kind != QZLOG_FROM_SEQUENCE || start.sequence == 0)) return;
  struct stat status = {};
  if (::fstat(descriptor_, &status) != 0) fail_for_good(std::strerror(errno));
  const auto now = static_cast<std::uint64_t>(status.st_size);
  qzlog_received skipped = {};
  while ((from_now && position_ - (held_.size() - given_) < now) || (!from_now && sequence_ + 1 < start.sequence)) {
    if (give_out(&skipped, 1) == 0 && !read_more()) return;
  }
}

/// False where nothing more is there now.
bool qzlog_reader::read_more() {
  held_.erase(0, given_);
  given_ = 0;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, end_ - position_));
  const std::size_t before = held_.size();
  held_.resize(before + wanted);
  ssize_t count = 0;
  do {
    count = ::pread(descriptor_, held_.data() + before, wanted, static_cast<off_t>(position_));
  } while (count < 0 && errno == EINTR);
  held_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) fail_for_now("cannot read '" + file_.path + "': " + std::strerror(errno));
  position_ += static_cast<std::uint64_t>(count);
  return count > 0;
}

std::size_t qzlog_reader::give_out(qzlog_received* records, std::size_t most) {
  std::size_t count = 0;
  while (count < most) {
    const std::size_t end = held_.find('\n', given_);
    if (end == std::string::npos) break;
    const qzlog_ship::RecordText text =
        qzlog_ship::read_record(std::string_view(held_).substr(given_, end - given_), file_.form);
    qzlog_received& record = records[count++];
    record = {};
    record.line = text_of(text.line);
    record.identity = text_of(text.identity);
    record.sequence = record.token = ++sequence_;
    given_ = end + 1;
  }
  return count;
}

bool qzlog_reader::read(qzlog_received* records, std::size_t most, std::uint32_t timeout_ms, std::size_t& count) {
  if (group_ != nullptr) return group_->read(records, most, timeout_ms, count);
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  for (;;) {
    count = give_out(records, most);
    if (count > 0) return true;
    if (read_more()) continue;
    if (position_ >= end_) return false;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
    if (left <= 0) return true;
    ::poll(nullptr, 0, static_cast<int>(std::min<long long>(left, kLookMilliseconds)));
  }
}
