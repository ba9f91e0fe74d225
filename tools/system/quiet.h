#ifndef QZLOG_TOOLS_SYSTEM_QUIET_H
#define QZLOG_TOOLS_SYSTEM_QUIET_H

namespace qzlog_tool {

/// From now on the command says nothing on stderr of how far it is, and no summary of what it passed over.
void want_quiet() noexcept;

bool is_quiet() noexcept;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_QUIET_H
