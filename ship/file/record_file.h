#ifndef QZLOG_SHIP_FILE_RECORD_FILE_H
#define QZLOG_SHIP_FILE_RECORD_FILE_H

#include <cstdint>
#include <string>
#include <string_view>

#include "ship/plugin/plugin_options.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// In which form a folder keeps records.
enum class RecordForm {
  kLines,    ///< entries.jsonl: the lines alone
  kRecords,  ///< records.tsv: IDENTITY, PRODUCT.EVENT.LEVEL and the line, with a tab between them
};

/// A record of such a file.
struct RecordText {
  std::string_view identity;  ///< empty where lines are kept alone
  std::string_view line;
};

/// The file that a URL file:///FOLDER means, by the option `keep`: lines or records. Throws a failure for good for a
/// URL with a host, and for a folder that is not there.
struct RecordFileName {
  std::string path;
  RecordForm form;

  static RecordFileName of(const qzlog_settings& settings, PluginOptions& options);
};

/// With its line feed.
void append_record(const qzlog_record& record, RecordForm form, std::string& text);
/// What a line of the file says, without its line feed.
RecordText read_record(std::string_view text, RecordForm form);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_RECORD_FILE_H
