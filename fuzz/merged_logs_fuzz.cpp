// Reads the input as several logs, each of one file or several, that come in pieces: merged by time, each line is seen
// once and as the reader of its file alone sees it, in the order of moments and then of logs. The first byte is the
// size of the pieces and whether lines are chosen; a line "--" begins a log, a line "++" the next file of one.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "tools/definitions/definitions.h"
#include "tools/merge/line_moment.h"
#include "tools/merge/merged_logs.h"
#include "tools/system/memory_file.h"

using qzlog_tool::MergedLogs;

namespace {

constexpr const char* kSource =
    "version: \"1.0\"\n"
    "globals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}]\n"
    "entries:\n"
    "  - {id: 1, name: EVENT, message: x, attributes: [{name: N, type: UInt4}, {name: T, type: Char32}]}\n";
constexpr std::size_t kMostLogs = 8;
constexpr std::size_t kMostFiles = 4;

void require(bool condition) {
  if (!condition) __builtin_trap();
}

/// What is seen of a line: where it stands, and the rule of an error.
struct Seen {
  std::string file;
  unsigned long long line;
  std::string rule;
  std::string source;
  bool operator==(const Seen&) const = default;
};

/// Takes down what a reader sees.
class Record : public qz_LOG_LineErrorHandler {
 public:
  void TakeLineError(const qz_LOG_LineError& error) override {
    seen.push_back({error.file, error.line, error.rule, {error.source, error.source_length}});
  }
  void take(const qz_LOG_EntryLine& line) {
    seen.push_back({line.GetFile(), line.GetLine(), "", {line.GetSource(), line.GetSourceLength()}});
  }

  std::vector<Seen> seen;
};

/// Leaves out lines with a letter in them.
class Choice : public qz_LOG_LineChoice {
 public:
  bool TakesLine(const char* line, std::size_t length) override { return std::memchr(line, 'Q', length) == nullptr; }
};

/// A text, so many bytes at a time.
class Pieces : public qz_LOG_ByteSource {
 public:
  Pieces(std::string_view text, std::size_t size) : rest_(text), size_(size) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t count = std::min({size, size_, rest_.size()});
    rest_.copy(buffer, count);
    rest_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view rest_;
  std::size_t size_;
};

/// Files by their names; those of a log begin with its letter.
using Files = std::map<std::string, std::string, std::less<>>;

Files files_of(std::string_view input) {
  Files files;
  char log = 'a';
  char file = '0';
  std::string* text = &files[{log, file}];
  while (!input.empty()) {
    const std::string_view line = input.substr(0, input.find('\n'));
    const bool is_log = line == "--" && log < static_cast<char>('a' + kMostLogs - 1);
    const bool is_file = line == "++" && file < static_cast<char>('0' + kMostFiles - 1);
    const std::size_t size = std::min(input.size(), line.size() + 1);
    if (is_log) ++log;
    if (is_log || is_file) {
      file = is_log ? '0' : static_cast<char>(file + 1);
      text = &files[{log, file}];
    } else {
      text->append(input.substr(0, size));
    }
    input.remove_prefix(size);
  }
  return files;
}

struct Placed {
  long long moment;
  Seen seen;
};

/// A log's lines as the reader of each file sees them, at their moments: that of an entry is the entry's own.
class PlainLog {
 public:
  void add(const std::string& name, const std::string& text, qz_LOG_LineChoice* choice, std::vector<Placed>& placed) {
    Record record;
    qz_LOG_EntryLine line;
    Pieces source(text, text.size());
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source, name.c_str(), &record);
    reader.SetLineChoice(choice);
    std::map<unsigned long long, long long> moments;
    while (reader.Next(line)) {
      record.take(line);
      const bool is_entry = !line.IsLoss() && !line.IsHeld();
      if (is_entry && line.HasTime()) moments[line.GetLine()] = line.GetEntry().GetTimestamp(true).unix_seconds();
      require(!is_entry || line.HasTime() || !moment_in(line.GetSource(), line.GetSourceLength()));
    }
    refused_ += reader.GetRefusedCount();
    auto seen = record.seen.begin();
    unsigned long long number = 1;
    for (std::string_view rest = without_mark(text); !rest.empty(); ++number) {
      const std::string_view own = rest.substr(0, rest.find('\n'));
      rest.remove_prefix(std::min(rest.size(), own.size() + 1));
      const auto known = moments.find(number);
      const std::optional<long long> said = known != moments.end() ? known->second : moment_in(own.data(), own.size());
      moment_ = std::max(moment_, said.value_or(moment_));
      if (seen != record.seen.end() && seen->line == number) placed.push_back({moment_, *seen++});
    }
    require(seen == record.seen.end());
  }

  unsigned long long refused() const { return refused_; }

 private:
  static std::optional<long long> moment_in(const char* line, std::size_t length) {
    return qzlog_tool::LineMoments().of({line, length});
  }
  static std::string_view without_mark(std::string_view text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
  }

  long long moment_ = std::numeric_limits<long long>::min();
  unsigned long long refused_ = 0;
};

void load() {
  static std::optional<qzlog_tool::MemoryFile> file;
  if (file && file->path() == qz_LOG_LogConfig::GetDefinitionPath()) return;
  file.emplace(qzlog_tool::read_definitions({"s.yaml", "s.yaml", kSource, true}, {.surprises = false}).bytes);
  qz_LOG_LogConfig::SetDefinitionPath(file->path().c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  load();
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  const std::size_t piece = (bytes[0] & 0x7FU) + 1;
  Choice no_q;
  qz_LOG_LineChoice* const choice = (bytes[0] & 0x80U) != 0 ? &no_q : nullptr;
  const Files files = files_of({reinterpret_cast<const char*>(bytes) + 1, size - 1});

  std::vector<Placed> placed;
  std::map<char, PlainLog> logs;
  std::map<char, qzlog_tool::InputFiles> grouped;
  for (const auto& [name, text] : files) {
    logs[name[0]].add(name, text, choice, placed);
    grouped[name[0]].paths.push_back(name);
  }
  std::stable_sort(placed.begin(), placed.end(),
                   [](const Placed& left, const Placed& right) { return left.moment < right.moment; });
  unsigned long long refused = 0;
  for (const auto& [name, log] : logs) refused += log.refused();
  std::vector<qzlog_tool::InputFiles> inputs;
  for (auto& [name, input] : grouped) inputs.push_back(std::move(input));

  Record record;
  qz_LOG_EntryLine line;
  MergedLogs merged(std::move(inputs),
                    {.open = [&](const std::string& path, bool /*may_be_gone*/) -> std::unique_ptr<qz_LOG_ByteSource> {
                       return std::make_unique<Pieces>(files.find(path)->second, piece);
                     },
                     .fail = [](const std::string& /*reason*/) { require(false); },
                     .handler = &record,
                     .choice = choice,
                     .nothing = line});
  while (merged.Next(line)) record.take(line);
  require(record.seen.size() == placed.size() && merged.all_read() && merged.refused_count() == refused);
  for (std::size_t index = 0; index < placed.size(); ++index) require(record.seen[index] == placed[index].seen);
  return 0;
}
