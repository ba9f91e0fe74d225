#include "tools/ship/ship_metrics.h"

#include <sstream>

#include "tools/report/json_stream.h"
#include "tools/ship/moment_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::JsonListStream;
using qzlog_compiler::JsonObjectStream;

void write_series(const std::vector<ShipMetrics::Series>& all, std::ostream& out) {
  JsonListStream list(out);
  for (const ShipMetrics::Series& series : all) {
    JsonObjectStream object(list.item());
    object.text("series", series.series);
    object.text("file", series.file);
    object.number("offset", series.offset);
    object.number("waiting_bytes", series.waiting_bytes);
    object.end();
  }
  list.end();
}

void write_counts(const ShipMetrics& metrics, JsonObjectStream& object) {
  object.number("read_lines", metrics.read_lines);
  object.number("read_bytes", metrics.read_bytes);
  object.number("passed_over", metrics.passed_over);
  object.number("acknowledged", metrics.acknowledged);
  object.number("acknowledged_bytes", metrics.acknowledged_bytes);
  object.number("doubles", metrics.doubles);
  object.number("dead_letters", metrics.dead_letters);
  object.number("unreadable", metrics.unreadable);
  object.number("missed", metrics.missed);
  object.number("batches", metrics.batches);
  object.number("sent_again", metrics.sent_again);
  object.number("failures", metrics.failures);
}

}  // namespace

std::string metrics_text(const ShipMetrics& metrics, const std::vector<ShipMetrics::Series>& series,
                         ShipMetrics::Moment now) {
  std::ostringstream out;
  JsonObjectStream object(out);
  object.number("qzlog_ship_metrics", 1);
  object.text("to", metrics.to);
  object.text("started", moment_text(metrics.started));
  object.text("time", moment_text(now));
  object.boolean("connected", metrics.is_connected);
  write_counts(metrics, object);
  std::uint64_t waiting = 0;
  for (const ShipMetrics::Series& own : series) waiting += own.waiting_bytes;
  object.number("waiting_bytes", waiting);
  if (metrics.latest_acknowledgement) {
    object.text("latest_acknowledgement", moment_text(*metrics.latest_acknowledgement));
  }
  if (!metrics.latest_failure.empty()) object.text("latest_failure", metrics.latest_failure);
  write_series(series, object.member("series"));
  object.end();
  out << '\n';
  return std::move(out).str();
}

}  // namespace qzlog_tool
