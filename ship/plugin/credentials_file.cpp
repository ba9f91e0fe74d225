#include "ship/plugin/credentials_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <utility>

#include "ship/plugin/descriptor.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 10;

[[noreturn]] void refuse_file(const std::string& path, const std::string& reason) {
  fail_for_good("cannot read the credentials in '" + path + "': " + reason);
}

ssize_t read_some(int descriptor, char* bytes, std::size_t count) {
  ssize_t got = 0;
  do {
    got = ::read(descriptor, bytes, count);
  } while (got < 0 && errno == EINTR);
  return got;
}

bool is_space(char character) { return std::isspace(static_cast<unsigned char>(character)) != 0; }

std::string trimmed(const std::string& text) {
  const auto begin = std::find_if_not(text.begin(), text.end(), is_space);
  const auto end = std::find_if_not(text.rbegin(), text.rend(), is_space).base();
  return begin < end ? std::string(begin, end) : std::string();
}

}  // namespace

std::string read_credentials(const std::string& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.get() < 0) refuse_file(path, std::strerror(errno));
  struct stat status = {};
  if (::fstat(file.get(), &status) == 0 && S_ISDIR(status.st_mode)) refuse_file(path, std::strerror(EISDIR));
  std::string content(kMostBytes + 1, '\0');
  std::size_t size = 0;
  while (size < content.size()) {
    const ssize_t got = read_some(file.get(), content.data() + size, content.size() - size);
    if (got < 0) refuse_file(path, std::strerror(errno));
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
  }
  if (size > kMostBytes) refuse_file(path, "it is larger than 64 KiB");
  content.resize(size);
  if (content.find('\0') != std::string::npos) refuse_file(path, "it is no text");
  return content;
}

CredentialsFile::CredentialsFile(std::string path, const std::string& content) : path_(std::move(path)) {
  std::size_t number = 1;
  for (std::size_t begin = 0; begin < content.size(); ++number) {
    const std::size_t end = std::min(content.find('\n', begin), content.size());
    add(trimmed(content.substr(begin, end - begin)), number);
    begin = end + 1;
  }
}

void CredentialsFile::add(const std::string& text, std::size_t line) {
  if (text.empty() || text.front() == '#') return;
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) refuse(line, "it is not KEY = VALUE");
  const std::string key = trimmed(text.substr(0, equals));
  if (!left_.insert({key, {trimmed(text.substr(equals + 1)), line}}).second) refuse(line, "the key stood there before");
}

std::optional<std::string> CredentialsFile::take(const std::string& key) {
  const auto found = left_.find(key);
  if (found == left_.end()) return std::nullopt;
  std::string value = std::move(found->second.value);
  left_.erase(found);
  return value;
}

void CredentialsFile::refuse_others(const std::string& known) const {
  if (!left_.empty()) refuse(left_.begin()->second.line, "there is no such key; there are " + known);
}

// A key may be a secret that stands in the wrong place: only its line is named.
void CredentialsFile::refuse(std::size_t line, const std::string& reason) const {
  refuse_file(path_, "line " + std::to_string(line) + ": " + reason);
}

}  // namespace qzlog_ship
