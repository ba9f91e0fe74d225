#ifndef QZLOG_TOOLS_SHIP_FILE_CHECK_H
#define QZLOG_TOOLS_SHIP_FILE_CHECK_H

#include <cstdint>
#include <string>

#include "tools/ship/record_identity.h"

namespace qzlog_tool {

/// The identity of the last line of a file that ends at `offset` or before it, blank ones left out; empty where none
/// does, and for one that is too long to be delivered. `path` is the file's from the root. Throws UnreadableInput.
std::string identity_before(int descriptor, const std::string& path, std::uint64_t offset,
                            const RecordIdentity& identities);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_FILE_CHECK_H
