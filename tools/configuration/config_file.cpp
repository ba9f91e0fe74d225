#include "tools/configuration/config_file.h"

#include <sys/stat.h>

#include "tools/configuration/config_check.h"
#include "tools/configuration/config_rules.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

ConfigFile read_config_file(const std::string& path, const std::string& section) {
  ConfigFile file{display_name(path), read_file(path), false, {}};
  file.findings = check_config(file.shown_path, file.content, section);
  struct stat status = {};
  file.is_regular = path != "-" && ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  if (file.is_regular && status.st_mtime == 0) {
    file.findings.push_back({file.shown_path,
                             {},
                             qzlog_compiler::Severity::kError,
                             ConfigRule::kNeverRead,
                             "its modification time is 0 (1970-01-01): nothing of it is read"});
  }
  return file;
}

}  // namespace qzlog_tool
