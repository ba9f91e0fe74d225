#ifndef QZLOG_SHIP_PLUGIN_CREDENTIALS_FILE_H
#define QZLOG_SHIP_PLUGIN_CREDENTIALS_FILE_H

#include <map>
#include <optional>
#include <string>

namespace qzlog_ship {

/// The whole content of a file with credentials, which has at most 64 KiB. Throws a failure for good that names the
/// file and shows nothing of it.
std::string read_credentials(const std::string& path);

/// What lines KEY = VALUE say; empty ones and those that begin with # say nothing. Each key is to be taken once:
///
///   CredentialsFile credentials(path);
///   const std::optional<std::string> user = credentials.take("user");
///   credentials.refuse_others("user, password");
///
/// Throws as above, naming the line.
class CredentialsFile {
 public:
  CredentialsFile(std::string path, const std::string& content);

  std::optional<std::string> take(const std::string& key);
  /// Once all that there are have been taken; `known` is the list of them for people.
  void refuse_others(const std::string& known) const;

 private:
  struct Setting {
    std::string value;
    std::size_t line;
  };

  void add(const std::string& text, std::size_t line);
  [[noreturn]] void refuse(std::size_t line, const std::string& reason) const;

  std::string path_;
  std::map<std::string, Setting> left_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_CREDENTIALS_FILE_H
