#include "sinks/pending_recovery.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "foundation/fork_gate.h"
#include "qzlog/log_util.h"
#include "sinks/pending_format.h"
#include "sinks/pending_lines.h"
#include "sinks/sink_clock.h"

namespace qzlog {

using namespace pending_format;

namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

std::string name_beginning(const LogDestination& destination) {
  char name[256];
  get_plockname(destination.hidden_name().c_str(), "pending", name);
  return std::string(name) + '.';
}

std::vector<std::string> pending_files(const LogDestination& destination) {
  std::vector<std::string> paths;
  const std::string beginning = name_beginning(destination);
  const ForkDelay fork_delay;
  const Folder folder(opendir(destination.folder().c_str()));
  if (folder == nullptr) return paths;
  while (const dirent* const entry = readdir(folder.get())) {
    const std::string_view name(entry->d_name);
    if (name.starts_with(beginning)) paths.push_back(destination.folder() + '/' + std::string(name));
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// A file of the folder by its identity: its name may have changed.
Descriptor open_by_identity(const std::string& folder_path, const FileIdentity& identity) {
  const Folder folder(opendir(folder_path.c_str()));
  if (folder == nullptr) return Descriptor();
  while (const dirent* const entry = readdir(folder.get())) {
    if (entry->d_ino != identity.inode) continue;
    const std::string path = folder_path + '/' + entry->d_name;
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (file && fstat(file.get(), &status) == 0 && identity_of(status) == identity) return Descriptor(file.release());
  }
  return Descriptor();
}

/// The pending file of a process that has ended.
class LeftFile : public qz_UTIL_no_inadvertant_copies {
 public:
  /// False when it belongs to a process that lives, or is no such file.
  bool open(const std::string& path);
  enum Content { kLines, kNothingYet, kUnknown };
  /// Reads it whole. Unlike a mapping, a file that is cut short meanwhile cannot end the process.
  Content read();

  std::vector<NumberedLine> lines(unsigned long long& damaged_bytes) const;
  std::string_view writer() const { return {header_.writer, strnlen(header_.writer, kWriterBytes)}; }
  /// What was noted before the last lines were written to the log.
  std::optional<Note> last_note() const;
  bool note(const FileIdentity& file, std::uint64_t end);
  void remove() const { unlink(path_.c_str()); }

 private:
  std::string_view half(unsigned index) const;
  template <typename Word>
  bool store(std::size_t offset, const Word& word) {
    return pwrite(file_.get(), &word, sizeof word, static_cast<off_t>(offset)) == static_cast<ssize_t>(sizeof word);
  }

  Descriptor file_;
  std::string path_;
  std::string bytes_;
  Header header_ = {};
};

bool LeftFile::open(const std::string& path) {
  path_ = path;
  const ForkDelay fork_delay;
  file_.reset(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  return file_ && fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode) &&
         flock(file_.get(), LOCK_EX | LOCK_NB) == 0 && fstat(file_.get(), &status) == 0 && status.st_nlink != 0;
}

LeftFile::Content LeftFile::read() {
  constexpr std::uint64_t kMost = kHeaderBytes + (1ULL << 28);
  struct stat status = {};
  if (fstat(file_.get(), &status) != 0 || static_cast<std::uint64_t>(status.st_size) > kMost) return kUnknown;
  bytes_.resize(static_cast<std::size_t>(status.st_size));
  std::size_t done = 0;
  while (done < bytes_.size()) {
    const ssize_t count = pread(file_.get(), bytes_.data() + done, bytes_.size() - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return kUnknown;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes_.resize(done);
  if (done < kHeaderBytes) return kNothingYet;
  std::memcpy(&header_, bytes_.data(), sizeof header_);
  constexpr char kNoMagic[sizeof kMagic] = {};
  if (std::memcmp(header_.magic, kNoMagic, sizeof kMagic) == 0) return kNothingYet;
  const bool is_known = std::memcmp(header_.magic, kMagic, sizeof kMagic) == 0 && header_.byte_order == kByteOrder;
  return is_known ? kLines : kUnknown;
}

std::string_view LeftFile::half(unsigned index) const {
  const std::string_view all(bytes_);
  const std::size_t begin = kHeaderBytes + index * static_cast<std::size_t>(header_.half_bytes);
  if (begin >= all.size()) return {};
  return all.substr(begin, std::min(header_.committed[index], header_.half_bytes));
}

std::vector<NumberedLine> LeftFile::lines(unsigned long long& damaged_bytes) const {
  const WriterLines own(writer());
  std::vector<NumberedLine> all;
  for (unsigned index = 0; index < kHalves; ++index) {
    const std::vector<NumberedLine> some = find_lines(half(index), own, damaged_bytes);
    all.insert(all.end(), some.begin(), some.end());
  }
  std::sort(all.begin(), all.end(), [](const NumberedLine& a, const NumberedLine& b) { return a.seq < b.seq; });
  std::erase_if(all, [&](const NumberedLine& line) { return line.seq <= header_.flushed_seq; });
  return all;
}

std::optional<Note> LeftFile::last_note() const {
  if (header_.notes_taken == 0) return std::nullopt;
  return header_.notes[(header_.notes_taken - 1) % 2];
}

bool LeftFile::note(const FileIdentity& file, std::uint64_t end) {
  const Note note = {file.device, file.inode, end};
  const std::uint32_t taken = header_.notes_taken;
  if (!store(offsetof(Header, notes) + taken % 2 * sizeof(Note), note)) return false;
  header_.notes_taken = taken + 1;
  return store(offsetof(Header, notes_taken), header_.notes_taken);
}

/// Those of the lines that are in the log already are the first ones.
void leave_out_written(const LogDestination& destination, const LeftFile& left, std::vector<NumberedLine>& lines) {
  const std::optional<Note> note = left.last_note();
  if (!note || lines.empty()) return;
  const ForkDelay fork_delay;
  const Descriptor log = open_by_identity(destination.folder(), {note->device, note->inode});
  if (!log) return;
  const std::uint64_t last = last_seq_in_file(log.get(), note->end, WriterLines(left.writer()));
  std::erase_if(lines, [&](const NumberedLine& line) { return line.seq <= last; });
}

/// True when nothing is left to be written.
bool write_lines(LogDestination& destination, const SeriesHold& hold, LeftFile& left,
                 const std::vector<NumberedLine>& lines, unsigned long long& written) {
  std::string text;
  for (const NumberedLine& line : lines) text += line.text;
  std::uint64_t end = 0;
  if (text.empty()) return true;
  if (!destination.prepare(hold, SinkClock::now(), text.size()) || !destination.get_end(end)) return false;
  if (!left.note(destination.file().identity(), end)) return false;
  const std::size_t count = destination.append(hold, text);
  written += static_cast<unsigned long long>(std::count(text.begin(), text.begin() + static_cast<long>(count), '\n'));
  return count == text.size();
}

void recover_file(LogDestination& destination, const SeriesHold& hold, const std::string& path,
                  RecoveredLines& result) {
  LeftFile left;
  if (!left.open(path)) return;
  const LeftFile::Content content = left.read();
  if (content == LeftFile::kUnknown) return;  // another version's, or another kind of host's
  if (content == LeftFile::kNothingYet) return left.remove();
  std::vector<NumberedLine> lines = left.lines(result.damaged_bytes);
  leave_out_written(destination, left, lines);
  if (write_lines(destination, hold, left, lines, result.lines)) left.remove();
}

}  // namespace

std::string pending_path(const LogDestination& destination, long process, unsigned long long start) {
  return destination.folder() + '/' + name_beginning(destination) + std::to_string(process) + '.' +
         std::to_string(start);
}

RecoveredLines recover_pending(LogDestination& destination) {
  RecoveredLines result;
  for (const std::string& path : pending_files(destination)) {
    const SeriesHold hold(destination.lock());
    recover_file(destination, hold, path, result);
  }
  return result;
}

}  // namespace qzlog
