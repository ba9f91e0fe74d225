#ifndef QZLOG_BENCH_RUN_TIME_VALUE_H
#define QZLOG_BENCH_RUN_TIME_VALUE_H

namespace qzlog_bench {

/// Hides a value from the compiler, which has to take it from memory from now on. (benchmark::DoNotOptimize may lose
/// the value of a small object that it is given as a variable.)
template <typename Value>
void make_unknown(Value& value) {
  asm volatile("" : : "r"(&value) : "memory");
}

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_RUN_TIME_VALUE_H
