#include "tools/system/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

#include "tools/compiler/text/number_text.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/file_replacement.h"
#include "tools/system/signal_delay.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {
namespace {

namespace fs = std::filesystem;

constexpr int kMaximumLinks = 40;  ///< as many as the system follows

void write_content(int descriptor, std::string_view content, const std::string& path) {
  std::string escaped;
  if (is_escaped(descriptor)) {
    append_terminal_text(content, escaped);
    content = escaped;
  }
  const int error = write_all(descriptor, content.data(), content.size());
  if (error != 0) refuse_to_write(path, error);
}

/// None for a file that does not exist.
std::optional<struct stat> status_of(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0) return status;
  if (errno != ENOENT) refuse_to_write(path, errno);
  return std::nullopt;
}

/// Where the path leads, link by link, so that also the place of a file that does not exist yet is found, and
/// descriptors of the process are seen before they become the files that they stand for.
fs::path followed(fs::path path) {
  for (int links = 0; links < kMaximumLinks; ++links) {
    std::error_code error;
    const fs::path parent = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
    if (error) return path;
    path = parent / path.filename();
    if (parent == fs::canonical("/proc/self/fd", error)) return path;
    const fs::path link = fs::read_symlink(path, error);
    if (error) return path;
    path = parent / link;
  }
  return path;
}

/// The descriptor that "-", /dev/stdout, /dev/fd/N or a link to one of them means.
std::optional<int> descriptor_of(const std::string& path, const fs::path& place) {
  if (path == "-") return STDOUT_FILENO;
  std::error_code missing;
  if (place.parent_path() != fs::canonical("/proc/self/fd", missing) || missing) return std::nullopt;
  const std::string name = place.filename().string();
  const auto number = qzlog_compiler::parse_number(name, 0, std::numeric_limits<int>::max());
  return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

bool holds_already(const std::string& path, const struct stat& status, std::string_view content) {
  if (static_cast<std::uintmax_t>(status.st_size) != content.size()) return false;
  try {
    return read_file(path) == content;
  } catch (const CommandError&) {
    return false;  // a file that cannot be read can still be replaced
  }
}

void write_in_place(const std::string& path, int more_flags, std::string_view content) {
  const int descriptor = open_path(path, O_WRONLY | O_CLOEXEC | more_flags);
  if (descriptor < 0) refuse_to_write(path, errno);
  FileDescriptor file(descriptor);
  write_content(file.get(), content, path);
  const int closed = file.close();
  if (closed != 0) refuse_to_write(path, closed);
}

bool is_same(const std::optional<struct stat>& one, const std::optional<struct stat>& other) {
  return one && other && one->st_dev == other->st_dev && one->st_ino == other->st_ino;
}

/// Not so where the path stands for an open file of another process that has no name any more, or never had one: what
/// it says then leads to something else, or to nothing. Looks again when the file was replaced meanwhile; one that is
/// gone by now leaves its place free.
bool leads_to(const std::string& path, const fs::path& place) {
  for (;;) {
    const std::optional<struct stat> before = status_of(path);
    struct stat found = {};
    if (!before || (::stat(place.c_str(), &found) == 0 && is_same(before, found))) return true;
    if (is_same(before, status_of(path))) return false;
  }
}

/// A regular file that has to change.
struct Change {
  const OutputFile* output;
  std::string target;
  std::optional<mode_t> mode;
};

/// Writes to what is no regular file with a name.
std::optional<Change> write_or_plan(const OutputFile& output) {
  const fs::path place = followed(output.path);
  if (const std::optional<int> descriptor = descriptor_of(output.path, place)) {
    write_content(*descriptor, output.content, output.path == "-" ? "standard output" : output.path);
    return std::nullopt;
  }
  const std::optional<struct stat> status = status_of(output.path);
  if (!status) return Change{&output, place.string(), std::nullopt};
  if (!S_ISREG(status->st_mode)) {
    write_in_place(output.path, 0, output.content);
    return std::nullopt;
  }
  if (holds_already(output.path, *status, output.content)) return std::nullopt;
  if (!leads_to(output.path, place)) {
    write_in_place(output.path, O_TRUNC, output.content);
    return std::nullopt;
  }
  return Change{&output, place.string(), status->st_mode};
}

void replace(const std::vector<Change>& changes) {
  const SignalDelay delay;
  std::vector<FileReplacement> replacements;
  replacements.reserve(changes.size());
  for (const Change& change : changes) {
    replacements.emplace_back(change.target, change.output->path, change.mode, change.output->content);
  }
  for (FileReplacement& replacement : replacements) replacement.take_effect();
}

}  // namespace

void write_files(std::span<const OutputFile> outputs) {
  std::vector<Change> changes;
  for (const OutputFile& output : outputs) {
    if (std::optional<Change> change = write_or_plan(output)) changes.push_back(std::move(*change));
  }
  replace(changes);
}

void write_file(const std::string& path, std::string_view content) {
  const OutputFile output{path, content};
  write_files({&output, 1});
}

bool names_descriptor(const std::string& path) { return descriptor_of(path, followed(path)).has_value(); }

bool same_file(const std::string& path, const std::string& other) {
  if (path == "-" || other == "-") return path == other;
  std::error_code missing;
  return fs::equivalent(path, other, missing) || followed(path) == followed(other);
}

void refuse_overwriting(const std::string& input, const std::string& output) {
  if (input.empty() || input == "-" || !same_file(input, output)) return;
  throw CommandError(kExitCannotRun, "the output '" + output + "' is one of the input files");
}

}  // namespace qzlog_tool
