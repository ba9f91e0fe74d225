#ifndef QZLOG_TOOLS_RENDER_LOG_FOLLOWER_H
#define QZLOG_TOOLS_RENDER_LOG_FOLLOWER_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "tools/render/change_watch.h"
#include "tools/render/entry_rendering.h"
#include "tools/render/followed_log.h"

namespace qzlog_tool {

/// Renders logs, and goes on as they grow.
class LogFollower {
 public:
  /// Why it ended.
  struct End {
    bool all_read = true;      ///< false: something could not be read, as stderr says
    int signal = 0;            ///< that asked for the end
    bool output_gone = false;  ///< nobody reads standard output any more
  };

  /// `rendering` has to outlive this object.
  explicit LogFollower(EntryRendering& rendering);

  /// What the operands stand for, in their order to its end at first. Standard input and pipes have an end; without
  /// anything else it is the end of all. Otherwise SIGINT, SIGTERM, SIGHUP or a reader that leaves ends it.
  End follow(const std::vector<std::string>& operands);

 private:
  /// The logs that come up in it are followed.
  struct Folder {
    std::string path;
    std::string complaint;  // the last one
  };

  void begin(const std::string& operand);
  void begin_log(const std::string& path);
  void look_into(Folder& folder);
  void add(const std::string& key, const LogName& name);
  bool must_end();
  void read_all(bool names_changed);

  EntryRendering& rendering_;
  ChangeWatch watch_;
  std::list<Folder> folders_;
  std::list<FollowedLog> operands_;           // of the command line
  std::map<std::string, FollowedLog> found_;  // in folders
  End end_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LOG_FOLLOWER_H
