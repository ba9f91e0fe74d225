#include "tools/logs/journal_log.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "lines/utf8_text.h"
#include "sinks/journal_names.h"
#include "tools/logs/unreadable_input.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kScheme = "journal";
constexpr std::size_t kPieceBytes = 64U << 10;

/// As journald names the folder of a namespace's files: MACHINE.NAMESPACE.
bool has_files(const std::string& name_space) {
  for (const char* const folder : {"/var/log/journal", "/run/log/journal"}) {
    std::error_code error;
    for (const fs::directory_entry& each : fs::directory_iterator(folder, error)) {
      if (each.path().filename().string().ends_with('.' + name_space)) return true;
    }
  }
  return false;
}

/// journalctl shows nothing, and succeeds, for a namespace that is not there.
void check_namespace(const std::string& name_space) {
  if (name_space.empty() || has_files(name_space)) return;
  throw CommandError(kExitCannotRun, "there is no journal of the namespace " + qzlog::quoted(name_space) +
                                         "; programs begin one that write to it (journal_namespace = " + name_space +
                                         ") while systemd-journald@" + name_space + ".service runs");
}

std::vector<std::string> program_for(const JournalAddress& address, JournalLog::End end) {
  check_namespace(address.name_space);
  std::vector<std::string> program = {"journalctl", "--quiet", "--no-pager", "--output=export"};
  program.push_back("--output-fields=" + std::string(qzlog::kJournalEntryField));
  if (!address.name_space.empty()) program.push_back("--namespace=" + address.name_space);
  if (end == JournalLog::End::kNever) program.insert(program.end(), {"--follow", "--lines=all"});
  program.emplace_back("_TRANSPORT=journal");
  return program;
}

}  // namespace

std::optional<JournalAddress> journal_address(std::string_view text) {
  if (!text.starts_with(kScheme)) return std::nullopt;
  text.remove_prefix(kScheme.size());
  if (text.empty()) return JournalAddress();
  if (!text.starts_with(':')) return std::nullopt;
  const std::string_view name = text.substr(1);
  if (!qzlog::is_journal_namespace(name)) {
    throw CommandError(kExitCannotRun, qzlog::quoted(name) +
                                           " is no namespace of the journal: these have up to 64 "
                                           "letters, digits and : - _ . @");
  }
  return JournalAddress{std::string(name)};
}

JournalLog::JournalLog(const JournalAddress& address, End end)
    : program_(program_for(address, end), "; it comes with the package systemd") {}

std::size_t JournalLog::Read(char* buffer, std::size_t size) {
  while (given_ == lines_.size()) {
    lines_.clear();
    given_ = 0;
    std::array<char, kPieceBytes> piece;
    std::size_t count = 0;
    try {
      count = program_.read(piece.data(), piece.size());
    } catch (const CommandError& error) {
      throw UnreadableInput(error.what());
    }
    if (count == 0) return 0;
    export_.take({piece.data(), count}, lines_);
  }
  const std::size_t count = lines_.copy(buffer, size, given_);
  given_ += count;
  return count;
}

}  // namespace qzlog_tool
