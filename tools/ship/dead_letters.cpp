#include "tools/ship/dead_letters.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "lines/json_text.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/ship/moment_text.h"
#include "tools/ship/own_file.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kBlock = 65536;

void append_member(const char* key, std::string_view value, std::string& text) {
  text.append(text.empty() || text.back() == '\n' ? "{" : ",").append("\"").append(key).append("\":");
  qzlog::append_json_text(value, text);
}

std::string base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    unsigned group = 0;
    for (std::size_t byte = 0; byte < 3; ++byte) {
      group = group << 8U | (byte < count ? static_cast<unsigned char>(bytes[at + byte]) : 0U);
    }
    for (std::size_t digit = 0; digit < 4; ++digit) {
      text += digit <= count ? kDigits[group >> (18 - 6 * digit) & 63U] : '=';
    }
  }
  return text;
}

/// Behind the last line feed; -1, with errno, when it cannot be read: the next line would else go on a torn one.
off_t end_of_lines(int descriptor, off_t size) {
  char block[kBlock];
  for (off_t end = size; end > 0;) {
    const off_t begin = std::max<off_t>(0, end - static_cast<off_t>(sizeof block));
    const ssize_t count = ::pread(descriptor, block, static_cast<std::size_t>(end - begin), begin);
    if (count < 0 && errno == EINTR) continue;
    if (count >= 0 && count < end - begin) errno = EIO;  // a part does not tell where the last line begins
    if (count < end - begin) return -1;
    const std::size_t line_feed = std::string_view(block, static_cast<std::size_t>(count)).rfind('\n');
    if (line_feed != std::string_view::npos) return begin + static_cast<off_t>(line_feed) + 1;
    end = begin;
  }
  return 0;
}

}  // namespace

DeadLetters::DeadLetters(std::string path, std::string to) : path_(std::move(path)), to_(std::move(to)) {}

void DeadLetters::add(const DeadLetter& letter) {
  append_member("reason", letter.reason, text_);
  append_member("to", to_, text_);
  append_member("time", moment_text(std::chrono::system_clock::now()), text_);
  append_member("identity", letter.identity, text_);
  append_member("file", letter.file, text_);
  text_ += ",\"offset\":" + std::to_string(letter.offset);
  append_member("line", letter.line, text_);
  if (!qzlog_compiler::is_utf8(letter.line)) append_member("bytes", base64(letter.line), text_);
  text_ += "}\n";
  ++count_;
}

// What a process that was killed left of a line is cut off: that line is delivered, or refused, again.
void DeadLetters::open() {
  if (file_.get() >= 0) return;
  file_ = open_own_file(path_, O_RDWR | O_APPEND, 0640);
  if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    throw CommandError(kExitCannotRun,
                       "another 'qzlog ship' writes to '" + path_ + "': name another file of dead letters");
  }
  struct stat status = {};
  if (::fstat(file_.get(), &status) != 0) refuse_to_write(path_, errno);
  if (!S_ISREG(status.st_mode)) return;
  const off_t end = end_of_lines(file_.get(), status.st_size);
  if (end < 0 || (end != status.st_size && ::ftruncate(file_.get(), end) != 0)) refuse_to_write(path_, errno);
}

bool DeadLetters::sync() {
  if (text_.empty()) return false;
  open();
  const int error = write_all(file_.get(), text_.data(), text_.size());
  if (error != 0) refuse_to_write(path_, error);
  while (::fdatasync(file_.get()) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) break;
    if (errno != EINTR) refuse_to_write(path_, errno);
  }
  std::string().swap(text_);
  return true;
}

}  // namespace qzlog_tool
