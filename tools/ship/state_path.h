#ifndef QZLOG_TOOLS_SHIP_STATE_PATH_H
#define QZLOG_TOOLS_SHIP_STATE_PATH_H

#include <string>
#include <vector>

namespace qzlog_tool {

/// Where the state is kept when nobody says: ship-DIGEST.json, another one for other operands or another receiver, in
/// the folder that systemd gives a service (STATE_DIRECTORY), else $XDG_STATE_HOME/qzlog or ~/.local/state/qzlog, which
/// is made. Throws CommandError (cannot run) where there is none of them.
std::string usual_state_path(const std::vector<std::string>& operands, const std::string& url);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_STATE_PATH_H
