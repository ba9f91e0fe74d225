#ifndef QZLOG_TOOLS_DEFINITIONS_GIT_OBJECT_H
#define QZLOG_TOOLS_DEFINITIONS_GIT_OBJECT_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// Whether an argument is of the form `git:REV:PATH`: it begins so. A file of such a name is given as "./git:...".
bool names_git_object(std::string_view argument);

/// What the repository of the working folder holds under PATH at the revision REV; git's own complaints go to stderr.
/// Throws CommandError (cannot run).
std::string read_git_object(const std::string& argument);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_GIT_OBJECT_H
