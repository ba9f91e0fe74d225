#ifndef QZLOG_FOUNDATION_THREAD_END_H
#define QZLOG_FOUNDATION_THREAD_END_H

namespace qzlog {

/// What the calling thread has to release when it ends. The C library calls for it when the destructors of the thread's
/// own thread_local objects have run, and not for a main thread that returns or calls exit, which keeps what it has
/// until the process is over.
///
/// Not a thread_local object with a destructor: registering one ends the process when there is no memory. Unlike that,
/// this does not keep the library loaded, so it is linked never to be unloaded.
class ThreadEnd {
 public:
  /// The base of what is released: `release` destroys it. It may use ThreadEnd, but adds nothing.
  struct Duty {
    void (*release)(Duty* duty) noexcept;
    Duty* next;
  };

  /// Whether releasing has begun: nothing can be added any more.
  static bool is_over() noexcept { return over_; }

  /// The latest is released first. False, with nothing added, when the thread is over or the C library has no room.
  static bool add(Duty* duty) noexcept;

 private:
  static void release_all(void* latest) noexcept;

  class Key;
  static const Key key_;
  static inline constinit thread_local bool over_ = false;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_THREAD_END_H
