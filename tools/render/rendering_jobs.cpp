#include "tools/render/rendering_jobs.h"

#include <unistd.h>

#include <exception>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/logs/unreadable_input.h"
#include "tools/render/abort_action.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

/// As many blocks for each thread keep it busy while others are put out, in memory that does not grow.
constexpr std::size_t kBlocksOfThread = 3;
/// What a long line took is given back.
constexpr std::size_t kMostKeptBytes = 4 * LineBlock::kUsualBytes;

}  // namespace

RenderingJobs::RenderingJobs(std::size_t count, const BlockOptions& options, BufferedOutput& output,
                             LineReporter& reporter)
    : output_(output), reporter_(reporter) {
  while (workers_.size() < count) workers_.push_back(std::make_unique<Worker>(options));
  std::size_t started = 0;
  try {
    for (; started < count; ++started) start(*workers_[started]);
  } catch (const std::system_error&) {
    workers_.resize(started);  // the system allows no more
  }
}

// A thread that is aborted stays where it is, and refers to nothing any more.
RenderingJobs::~RenderingJobs() {
  std::unique_lock<std::mutex> lock(mutex_);
  is_ending_ = true;
  waiting_.clear();
  item_is_there_.notify_all();
  for (const std::unique_ptr<Worker>& worker : workers_) {
    worker_has_ended_.wait(lock, [&worker] { return worker->has_ended || worker->is_aborted; });
  }
  lock.unlock();
  for (const std::unique_ptr<Worker>& worker : workers_) {
    worker->is_aborted ? worker->thread.detach() : worker->thread.join();
  }
}

void RenderingJobs::start(Worker& worker) {
  worker.thread = std::thread([this, &worker] { work(worker); });
}

void RenderingJobs::work(Worker& worker) {
  Item* item = nullptr;
  const AbortAction when_aborted([&] {
    if (item != nullptr) abort_item(worker, *item);
  });
  while (Item* const next = next_item()) {
    item = next;
    worker.rendering.render(next->block, next->result);
    item = nullptr;
    mark_done(*next);
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  worker.has_ended = true;
  worker_has_ended_.notify_one();
}

/// Waits for one; null at the end.
RenderingJobs::Item* RenderingJobs::next_item() {
  std::unique_lock<std::mutex> lock(mutex_);
  item_is_there_.wait(lock, [this] { return is_ending_ || !waiting_.empty(); });
  if (waiting_.empty()) return nullptr;
  Item* const item = waiting_.front();
  waiting_.pop_front();
  return item;
}

// What was read before it is put out first; the thread that does so then ends the process.
void RenderingJobs::abort_item(Worker& worker, Item& item) {
  worker.rendering.abort(item.result);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    item.is_done = true;
    has_aborted_ = true;
    worker.is_aborted = true;
    item_is_done_.notify_one();
    worker_has_ended_.notify_one();
  }
  for (;;) ::pause();
}

void RenderingJobs::mark_done(Item& item) {
  bool is_awaited = false;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    item.is_done = true;
    is_awaited = awaited_ == &item;
  }
  if (is_awaited) item_is_done_.notify_one();
}

void RenderingJobs::read(LogInput& input) {
  LineBlockCutter cutter(input, [this, &input] {
    while (!items_.empty() && input.would_wait()) put_out_first();
  });
  try {
    for (;;) {
      std::unique_ptr<Item> item = empty_item();
      if (!cutter.fill(item->block)) return;
      submit(std::move(item));
    }
  } catch (const UnreadableInput&) {
    finish();
    throw;
  }
}

void RenderingJobs::finish() {
  while (!items_.empty()) put_out_first();
}

bool RenderingJobs::is_full() const {
  const std::size_t most = kBlocksOfThread * workers_.size();
  return items_.size() >= most || bytes_ > most * LineBlock::kUsualBytes;
}

std::unique_ptr<RenderingJobs::Item> RenderingJobs::empty_item() {
  while (is_full()) put_out_done();
  if (empty_items_.empty()) return std::make_unique<Item>();
  std::unique_ptr<Item> item = std::move(empty_items_.back());
  empty_items_.pop_back();
  return item;
}

void RenderingJobs::submit(std::unique_ptr<Item> item) {
  bytes_ += item->block.room.size();
  Item* const waiting = items_.emplace_back(std::move(item)).get();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    waiting_.push_back(waiting);
  }
  item_is_there_.notify_one();
}

void RenderingJobs::wait_for(const Item& item) {
  std::unique_lock<std::mutex> lock(mutex_);
  awaited_ = &item;
  // After an abort only the first item is sure to be done some time: they are taken in their order.
  item_is_done_.wait(lock, [&] { return item.is_done || (has_aborted_ && &item != items_.front().get()); });
  awaited_ = nullptr;
}

/// Several at once: a thread that renders makes way each time that this one goes on. As many are left as keep the
/// others busy meanwhile.
void RenderingJobs::put_out_done() {
  const std::size_t count = (items_.size() + 1) / 2;
  wait_for(*items_[count - 1]);
  for (std::size_t i = 0; i < count; ++i) put_out_first();
}

void RenderingJobs::put_out_first() {
  Item& item = *items_.front();
  wait_for(item);
  item.is_done = false;
  put_out(item);
  bytes_ -= item.block.room.size();
  if (item.memory_bytes() > kMostKeptBytes) item = Item();
  empty_items_.push_back(std::move(items_.front()));
  items_.pop_front();
}

void RenderingJobs::put_out(Item& item) {
  const std::string_view output = item.result.output;
  std::size_t written = 0;
  for (const HeldError& error : item.result.errors) {
    output_.write_laid_out(output.substr(written, error.output_bytes - written));
    written = error.output_bytes;
    reporter_.report({*item.block.file, error.number, error.line, error.byte}, error.rule, error.text);
  }
  if (item.result.is_aborted) {
    tell_passed_over();
    ::_exit(kExitFindings);
  }
  output_.write_laid_out(output.substr(written));
  if (item.result.failure) std::rethrow_exception(item.result.failure);
  reporter_.update(lines_ += item.block.lines);
}

}  // namespace qzlog_tool
