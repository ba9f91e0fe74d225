#include "tools/ship/state_path.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "foundation/sha256.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string state_folder() {
  const std::string service = environment("STATE_DIRECTORY");
  if (!service.empty()) return service.substr(0, service.find(':'));
  const std::string user = environment("XDG_STATE_HOME");
  if (!user.empty()) return user + "/qzlog";
  const std::string home = environment("HOME");
  if (!home.empty()) return home + "/.local/state/qzlog";
  throw CommandError(kExitCannotRun,
                     "there is no place for the state, for neither STATE_DIRECTORY nor HOME is set: name a file with "
                     "--state");
}

void add(const std::string& text, qzlog::Sha256& sha) { sha.add(text.c_str(), text.size() + 1); }

}  // namespace

std::string usual_state_path(const std::vector<std::string>& operands, const std::string& url) {
  const std::string folder = state_folder();
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw CommandError(kExitCannotRun, "cannot make the folder '" + folder + "': " + error.message());
  std::vector<std::string> paths;
  for (const std::string& operand : operands) {
    const fs::path path = fs::weakly_canonical(operand, error);
    paths.push_back(error ? operand : path.string());
  }
  std::sort(paths.begin(), paths.end());
  qzlog::Sha256 sha;
  add(url, sha);
  for (const std::string& path : paths) add(path, sha);
  char digits[qzlog::kShortDigestDigits];
  qzlog::write_short_digest(sha.digest(), digits);
  return folder + "/ship-" + std::string(digits, sizeof digits) + ".json";
}

}  // namespace qzlog_tool
