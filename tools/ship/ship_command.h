#ifndef QZLOG_TOOLS_SHIP_SHIP_COMMAND_H
#define QZLOG_TOOLS_SHIP_SHIP_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

void add_ship_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIP_COMMAND_H
