#ifndef QZLOG_TOOLS_SHIP_OWN_FILE_H
#define QZLOG_TOOLS_SHIP_OWN_FILE_H

#include <sys/types.h>

#include <string>
#include <string_view>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// Opens what a shipper keeps, makes it where it is not there. Neither through a link, which others could have laid in
/// a folder that they share, nor a pipe, which nobody may read. Throws CommandError (cannot run) with the reason.
FileDescriptor open_own_file(const std::string& path, int flags, mode_t mode);

enum class OnDisk { kWhenever, kBeforeItIsSeen };

/// Replaces a file in one step, through PATH.new; empty, or why that cannot be. What is no file stays as it is: a
/// device that took the name of a file would be gone for all.
std::string replace_own_file(const std::string& path, std::string_view content, mode_t mode, OnDisk on_disk);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_OWN_FILE_H
