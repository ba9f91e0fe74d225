#include "tools/definitions/message_path_option.h"

#include <CLI/CLI.hpp>

namespace qzlog_tool {

using qzlog_compiler::MessagePath;

void add_message_path_option(CLI::App& command, std::string& path, const std::string& help) {
  command.add_option("--path", path, help)
      ->check(CLI::IsMember({"icu", "narrow", "both"}).description(""))
      ->type_name("icu|narrow|both")
      ->capture_default_str();
}

MessagePath message_path_of(const std::string& name) {
  if (name == "icu") return MessagePath::kIcu;
  return name == "narrow" ? MessagePath::kNarrow : MessagePath::kBoth;
}

}  // namespace qzlog_tool
