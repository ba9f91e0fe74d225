#include "sinks/loss_table.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace qzlog {

namespace {

bool is_same(const LossTable::Row& row, unsigned id, unsigned level) { return row.id == id && row.level == level; }

void count_up(unsigned& count, unsigned more) { count += std::min(more, std::numeric_limits<unsigned>::max() - count); }

void append_moment(const std::timespec& moment, std::string& out) {
  std::tm fields = {};
  gmtime_r(&moment.tv_sec, &fields);
  char text[80];
  out.append(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &fields));
  std::snprintf(text, sizeof text, ".%09ldZ", moment.tv_nsec);
  out += text;
}

}  // namespace

void LossTable::add(unsigned id, unsigned level, const std::timespec& now, unsigned count) noexcept {
  const MutexSentry hold(mutex_);
  const unsigned used = rows_used_.load(std::memory_order_relaxed);
  Row* const end = rows_ + used;
  Row* const row = std::find_if(rows_, end, [&](const Row& each) { return is_same(each, id, level); });
  if (row != end) return count_up(row->count, count);
  if (used == kRows) return count_up(rows_[kRows - 1].count, count);
  *row = {id, level, count, now};
  rows_used_.store(used + 1, std::memory_order_relaxed);
}

std::vector<LossTable::Row> LossTable::rows() const {
  const MutexSentry hold(mutex_);
  return {rows_, rows_ + rows_used_.load(std::memory_order_relaxed)};
}

void LossTable::take(const std::vector<Row>& rows) noexcept {
  const MutexSentry hold(mutex_);
  Row* end = rows_ + rows_used_.load(std::memory_order_relaxed);
  for (const Row& told : rows) {
    Row* const row = std::find_if(rows_, end, [&](const Row& each) { return is_same(each, told.id, told.level); });
    if (row != end) row->count -= std::min(row->count, told.count);
  }
  end = std::remove_if(rows_, end, [](const Row& each) { return each.count == 0; });
  rows_used_.store(static_cast<unsigned>(end - rows_), std::memory_order_relaxed);
}

void append_told_body(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) {
  out += kind == ToldOf::kLost ? "\"lost\":[" : "\"held\":[";
  for (const LossTable::Row& row : rows) {
    if (&row != rows.data()) out += ',';
    out += "{\"id\":" + std::to_string(row.id) + ",\"level\":" + std::to_string(row.level) +
           ",\"count\":" + std::to_string(row.count) + ",\"since\":\"";
    append_moment(row.since, out);
    out += "\"}";
  }
  out += "]}";
}

}  // namespace qzlog
