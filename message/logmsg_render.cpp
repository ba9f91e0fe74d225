#include "message/logmsg_render.h"

#include "entry/logentry_i.h"

namespace qzlog {

qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name) {
  return QZ_strcmp(name, "TIMESTAMP") == 0 ? entry.get_timestamp(false) : entry.get_attrib_time(name);
}

}  // namespace qzlog
