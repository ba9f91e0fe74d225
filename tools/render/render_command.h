#ifndef QZLOG_TOOLS_RENDER_RENDER_COMMAND_H
#define QZLOG_TOOLS_RENDER_RENDER_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog render`: entries as JSON Lines in, one readable message per line out. When the command line asks for it,
/// it runs while `app` parses and stores its exit status in `exit_status`, which has to outlive `app`.
void add_render_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_RENDER_COMMAND_H
