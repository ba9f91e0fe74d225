#include "tools/definitions/definition_input.h"

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "tools/compiler/source/compiler.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::MessagePath;

void read_compiled(std::string bytes, DefinitionInput& input) {
  qzlog_compiler::LdfFile file = qzlog_compiler::read_ldf(bytes);
  input.bytes = std::move(bytes);
  input.model = std::move(file.model);
  input.damage = std::move(file.damage);
}

void compile(std::string text, const DefinitionInput* standard, MessagePath path, DefinitionInput& input) {
  qzlog_compiler::CompileOptions options{path};
  if (standard != nullptr) {
    options.standard = &standard->model;
    options.standard_file = standard->shown_path;
  }
  try {
    qzlog_compiler::CompileResult result = qzlog_compiler::compile_source(text, input.shown_path, options);
    input.is_source = true;
    input.bytes = std::move(result.bytes);
    input.model = std::move(result.model);
    input.diagnostics = std::move(result.diagnostics);
    input.source = std::move(text);
  } catch (const std::length_error& error) {
    throw CommandError(kExitFindings, input.shown_path + ": " + error.what());
  }
}

}  // namespace

DefinitionInput read_definition_input(const std::string& path, const DefinitionInput* standard,
                                      MessagePath message_path) {
  DefinitionInput input;
  input.shown_path = display_name(path);
  std::string content = read_file(path);
  if (qzlog_compiler::looks_like_ldf(content) || std::filesystem::path(path).extension() == ".ldf") {
    read_compiled(std::move(content), input);
  } else {
    compile(std::move(content), standard, message_path, input);
  }
  return input;
}

void refuse_shared_input(const std::string& standard, const std::string& auxiliary) {
  if (standard != "-" || auxiliary != "-") return;
  throw CommandError(kExitCannotRun, "standard input cannot give both the standard and the auxiliary definitions");
}

MessagePath message_path_of(const std::string& name) {
  if (name == "icu") return MessagePath::kIcu;
  return name == "narrow" ? MessagePath::kNarrow : MessagePath::kBoth;
}

}  // namespace qzlog_tool
