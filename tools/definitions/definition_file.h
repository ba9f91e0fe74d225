#ifndef QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILE_H
#define QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILE_H

#include <string>

namespace qzlog_tool {

/// The bytes of definitions, wherever they come from.
struct DefinitionFile {
  std::string path;        ///< as it was given
  std::string shown_path;  ///< as texts show it: "<stdin>" for "-"
  std::string content;
  bool is_source = false;  ///< YAML; else a compiled file
};

/// Reads a file, standard input for "-", or an object of git for `git:REV:PATH`. What begins as compiled files do is
/// compiled, and so is what is named *.ldf, whatever it holds: readers of compiled files say what is wrong with it.
/// Everything else is a source. Throws CommandError (cannot run) with the reason.
DefinitionFile read_definition_file(const std::string& path);

/// The same where nothing but a source will do. Throws CommandError (cannot run) for a compiled file too.
DefinitionFile read_definition_source(const std::string& path);

/// Whether a path of definitions names a file: neither standard input nor an object of git.
bool names_file(const std::string& path);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILE_H
