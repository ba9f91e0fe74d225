#ifndef QZLOG_TOOLS_RENDER_RENDERING_JOBS_H
#define QZLOG_TOOLS_RENDER_RENDERING_JOBS_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tools/logs/line_reporter.h"
#include "tools/logs/log_input.h"
#include "tools/render/block_rendering.h"
#include "tools/render/line_block.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// Renders logs with several threads. The one that calls reads, cuts what it reads into blocks, and puts what the
/// others make of them out in their order: what is written and reported is what one thread would.
class RenderingJobs {
 public:
  /// As many threads as the system allows, up to `count`; `is_running` says whether there are any. `output` and
  /// `reporter` are where everything goes to; all have to outlive this object.
  RenderingJobs(std::size_t count, const BlockOptions& options, BufferedOutput& output, LineReporter& reporter);
  /// Blocks that nobody waited for are dropped.
  ~RenderingJobs();
  RenderingJobs(const RenderingJobs&) = delete;
  RenderingJobs& operator=(const RenderingJobs&) = delete;

  bool is_running() const { return !workers_.empty(); }

  /// Reads a log to its end; some of it may still be rendered then. Throws what the input throws, with everything
  /// before put out, and what rendering and the output throw.
  void read(LogInput& input);
  /// Puts everything out that was read.
  void finish();

  /// Calls `visit` for what each thread rendered with, when everything is put out.
  template <class Visit>
  void for_each_rendering(Visit&& visit) const {
    for (const std::unique_ptr<Worker>& worker : workers_) visit(worker->rendering);
  }

 private:
  struct Item {
    LineBlock block = {};
    RenderedBlock result = {};
    bool is_done = false;

    std::size_t memory_bytes() const {
      return block.room.size() + result.output.capacity() + result.errors.capacity() * sizeof(HeldError);
    }
  };

  struct Worker {
    explicit Worker(const BlockOptions& options) : rendering(options) {}

    BlockRendering rendering;
    std::thread thread;
    bool has_ended = false;
    bool is_aborted = false;  // it will not end
  };

  void start(Worker& worker);
  void work(Worker& worker);
  Item* next_item();
  void abort_item(Worker& worker, Item& item);
  void mark_done(Item& item);

  bool is_full() const;
  std::unique_ptr<Item> empty_item();
  void submit(std::unique_ptr<Item> item);
  void wait_for(const Item& item);
  void put_out_done();
  void put_out_first();
  void put_out(Item& item);

  BufferedOutput& output_;
  LineReporter& reporter_;
  std::vector<std::unique_ptr<Worker>> workers_;
  std::deque<std::unique_ptr<Item>> items_;         // read and not put out, in their order; of the calling thread
  std::vector<std::unique_ptr<Item>> empty_items_;  // whose memory serves again
  std::size_t bytes_ = 0;                           // of the blocks of items_
  std::uint64_t lines_ = 0;                         // put out
  std::mutex mutex_;  // of what follows, and of each item's is_done, and each worker's end
  std::condition_variable item_is_there_;
  std::condition_variable item_is_done_;
  std::condition_variable worker_has_ended_;
  std::deque<Item*> waiting_;      // for a thread
  const Item* awaited_ = nullptr;  // by the calling thread
  bool has_aborted_ = false;       // a thread, and what is behind its item may not be done any more
  bool is_ending_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_RENDERING_JOBS_H
