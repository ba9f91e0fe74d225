#include "sinks/sink_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

constexpr const char* kTooLong = "it is longer than 1048576 bytes";

[[noreturn]] void refuse_file(const std::string& path, const std::string& reason) {
  throw QZX_logging_file_operation_failed((path + ": " + reason).c_str(), 0);
}

[[noreturn]] void refuse_with_errno(const std::string& path) {
  refuse_file(path, std::error_code(errno, std::generic_category()).message());
}

class OpenFile {
 public:
  /// A pipe is not waited for.
  explicit OpenFile(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    if (descriptor_ < 0) refuse_with_errno(path);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(descriptor_); }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

std::string read_text(const std::string& path) {
  const OpenFile file(path);
  struct stat status = {};
  if (::fstat(file.get(), &status) != 0) refuse_with_errno(path);
  if (!S_ISREG(status.st_mode)) refuse_file(path, "it is no regular file");
  std::string text(SinkFile::kMostBytes + 1, '\0');
  std::size_t size = 0;
  while (size < text.size()) {
    const ssize_t count = ::read(file.get(), text.data() + size, text.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) refuse_with_errno(path);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  if (size > SinkFile::kMostBytes) refuse_file(path, kTooLong);
  text.resize(size);
  return text;
}

/// Cuts the first line off `text`, without its line break.
std::string_view cut_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

const SinkSetting* SinkSection::find(std::string_view key) const {
  const auto found =
      std::find_if(settings.begin(), settings.end(), [key](const SinkSetting& each) { return each.key == key; });
  return found != settings.end() ? &*found : nullptr;
}

SinkFile SinkFile::read(const std::string& path) { return {path, read_text(path)}; }

SinkFile::SinkFile(std::string path, std::string_view text) : path_(std::move(path)) {
  for (unsigned line = 1; !text.empty(); ++line) take_line(trimmed(cut_line(text)), line);
}

const SinkSection* SinkFile::find(std::string_view name) const {
  const auto found =
      std::find_if(sections_.begin(), sections_.end(), [name](const SinkSection& each) { return each.name == name; });
  return found != sections_.end() ? &*found : nullptr;
}

void SinkFile::refuse(unsigned line, const std::string& text) const {
  throw QZX_logging_illegal_argument((place(line) + text).c_str(), 0);
}

void SinkFile::take_line(std::string_view text, unsigned line) {
  if (text.empty() || text.front() == '#' || text.front() == ';') return;
  if (text.find('\0') != std::string_view::npos) refuse(line, "there is a zero byte in the line");
  if (text.front() == '[') return begin_section(text, line);
  take_setting(text, line);
}

void SinkFile::begin_section(std::string_view text, unsigned line) {
  const std::string_view name = trimmed(text.substr(1, text.size() - 2));
  if (text.size() < 2 || text.back() != ']' || name.empty() || name.find_first_of("[],") != std::string_view::npos) {
    refuse(line, "the line is no [section]");
  }
  if (const SinkSection* const same = find(name)) {
    refuse(line, "[" + std::string(name) + "]: the section is in line " + std::to_string(same->line) + " already");
  }
  if (sections_.size() == kMostSections) refuse(line, "there are more than 256 sections");
  sections_.push_back({std::string(name), line, {}});
}

void SinkFile::take_setting(std::string_view text, unsigned line) {
  const std::size_t sign = text.find('=');
  const std::string key(trimmed(text.substr(0, std::min(sign, text.size()))));
  if (sign == std::string_view::npos || key.empty()) refuse(line, "the line is neither a [section] nor 'key = value'");
  if (sections_.empty()) refuse(line, key + ": it stands before the first [section]");
  const std::string_view value = trimmed(text.substr(sign + 1));
  if (value.empty()) refuse(line, key + ": it has no value");
  SinkSection& section = sections_.back();
  if (const SinkSetting* const same = section.find(key)) {
    refuse(line, key + ": it is set in line " + std::to_string(same->line) + " already");
  }
  section.settings.push_back({key, std::string(value), line});
}

}  // namespace qzlog
