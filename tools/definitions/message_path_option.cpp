#include "tools/definitions/message_path_option.h"

#include <CLI/CLI.hpp>

namespace qzlog_tool {

using qzlog_compiler::RenderingPaths;

void add_message_path_option(CLI::App& command, std::string& path, const std::string& help) {
  command.add_option("--path", path, help)
      ->check(CLI::IsMember({"icu", "narrow", "both"}).description(""))
      ->type_name("icu|narrow|both")
      ->capture_default_str();
}

RenderingPaths message_path_of(const std::string& name) {
  if (name == "icu") return RenderingPaths::kIcu;
  return name == "narrow" ? RenderingPaths::kNarrow : RenderingPaths::kBoth;
}

}  // namespace qzlog_tool
