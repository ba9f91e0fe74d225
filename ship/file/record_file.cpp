#include "ship/file/record_file.h"

#include <sys/stat.h>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

RecordForm form_of(PluginOptions& options) {
  const std::string keep = options.take("keep").value_or("lines");
  if (keep != "lines" && keep != "records") fail_for_good("--option keep takes lines or records");
  return keep == "lines" ? RecordForm::kLines : RecordForm::kRecords;
}

/// Names have nothing that divides.
void append_name(std::string_view name, std::string& text) {
  for (const char character : name) {
    const bool divides = character == '\t' || character == '\n' || character == '.';
    text += divides ? '_' : character;
  }
}

}  // namespace

RecordFileName RecordFileName::of(const qzlog_settings& settings, PluginOptions& options) {
  require_scheme(settings, "file", "");
  if (settings.ca_file != nullptr || settings.credentials_file != nullptr) {
    fail_for_good("--ca and --credentials are not for folders");
  }
  const std::string host = settings.authority;
  if (!host.empty() && host != "localhost") {
    fail_for_good("a folder of another host cannot be written to: write file:///FOLDER, with three slashes");
  }
  const std::string folder = percent_decoded(settings.path);
  struct stat status = {};
  if (folder.empty() || ::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    fail_for_good("there is no folder '" + folder + "': make it, and start again");
  }
  const RecordForm form = form_of(options);
  return {folder + (form == RecordForm::kLines ? "/entries.jsonl" : "/records.tsv"), form};
}

void append_record(const qzlog_record& record, RecordForm form, std::string& text) {
  if (form == RecordForm::kRecords) {
    text.append(view_of(record.identity)).append("\t");
    append_name(view_of(record.product), text);
    text += '.';
    append_name(view_of(record.event), text);
    text.append(".").append(std::to_string(record.level)).append("\t");
  }
  text.append(view_of(record.line)).append("\n");
}

RecordText read_record(std::string_view text, RecordForm form) {
  if (form == RecordForm::kLines) return {{}, text};
  const std::size_t first = text.find('\t');
  const std::size_t second = first == std::string_view::npos ? first : text.find('\t', first + 1);
  if (second == std::string_view::npos) return {{}, text};
  return {text.substr(0, first), text.substr(second + 1)};
}

}  // namespace qzlog_ship
