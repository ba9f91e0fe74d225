#ifndef QZLOG_BENCH_ALLOCATIONS_H
#define QZLOG_BENCH_ALLOCATIONS_H

namespace qzlog_bench {

/// How often this thread has got memory from malloc, calloc, realloc or operator new. The program replaces the C
/// library's functions, so what the libraries allocate counts too.
long allocation_count();

/// Counts the bytes that this thread gets and gives back while the object lives, by the size of the blocks that the
/// allocator hands out. One at a time.
class HeapUse {
 public:
  HeapUse();
  ~HeapUse();
  HeapUse(const HeapUse&) = delete;
  HeapUse& operator=(const HeapUse&) = delete;

  /// Got less given back since the object was made.
  long bytes() const;
};

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_ALLOCATIONS_H
