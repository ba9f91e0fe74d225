#ifndef QZLOG_TOOLS_CATALOG_CATALOG_COMMAND_H
#define QZLOG_TOOLS_CATALOG_CATALOG_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog catalog` with `extract`, `build` and `status`: message texts to translators' files, and back to the
/// resource bundles that the library opens. Runs while `app` parses and stores its exit status in `exit_status`, which
/// has to outlive `app`.
void add_catalog_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_COMMAND_H
