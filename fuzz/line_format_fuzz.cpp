// Reads the input as the format of a line and as the columns of a table. What is taken shows an entry on one line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/definitions/definitions.h"
#include "tools/shown/column_presentations.h"
#include "tools/shown/line_presentations.h"
#include "tools/system/command_error.h"
#include "tools/system/memory_file.h"

namespace {

using qzlog_tool::ShownEvents;
using qzlog_tool::ShownPlace;
using qzlog_tool::ShownTimes;

constexpr const char* kSource =
    "version: \"1.0\"\n"
    "entries:\n"
    "  - {id: 1, name: EVENT, message: x, attributes: [{name: Name, type: MBChar64}, {name: time, type: UInt2}]}\n";
constexpr std::string_view kLine =
    "{\"writer\":\"h/1/2\",\"seq\":3,\"id\":1,\"attributes\":{\"Name\":\"\\u001b\\u4E2De\\u0301\\n\\u202e\"}}\n";

/// An entry, whose definition stays with it, and what is known of its event.
class Shown {
 public:
  Shown() {
    const auto definitions = qzlog_tool::read_definitions({"s.yaml", "s.yaml", kSource, true}, {.surprises = false});
    const qzlog_tool::MemoryFile file(definitions.bytes);
    qz_LOG_LogConfig::SetDefinitionPath(file.path().c_str());
    events_.add(definitions.model);
    if (!qz_LOG_EntryReader::FromMemory(kLine.data(), kLine.size()).Next(line_)) std::abort();
  }

  const ShownEvents& events() const { return events_; }
  void check(qzlog_tool::Presentation& presentation) const {
    std::string out;
    const std::size_t coloured = presentation.append({line_, "a\nb\033"}, out);
    if (coloured + 1 != out.size() || out.find('\n') != coloured) std::abort();
  }

 private:
  qz_LOG_EntryLine line_;
  ShownEvents events_;
};

/// What is refused says why.
template <class Show>
void try_to(const Show& show) {
  try {
    show();
  } catch (const qzlog_tool::CommandError& error) {
    if (error.exit_status() != qzlog_tool::kExitCannotRun || *error.what() == '\0') std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Shown shown;
  const std::string text(bytes, bytes + size);
  ShownTimes times(qzlog_tool::ReaderZone::utc(), qzlog_tool::TimeStyle::kIso);
  for (const ShownPlace place : {ShownPlace{false, 0}, ShownPlace{true, 40}}) {
    try_to([&] {
      qzlog_tool::FormatPresentation format({text, shown.events()}, place, shown.events(), times);
      shown.check(format);
    });
    try_to([&] {
      qzlog_tool::TablePresentation table(read_columns(text, shown.events()), place, shown.events(), times);
      shown.check(table);
    });
  }
  return 0;
}
