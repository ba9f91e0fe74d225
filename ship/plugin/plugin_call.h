#ifndef QZLOG_SHIP_PLUGIN_PLUGIN_CALL_H
#define QZLOG_SHIP_PLUGIN_PLUGIN_CALL_H

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "ship/transport.h"

namespace qzlog_ship {

/// Thrown in a plug-in for what becomes QZLOG_LATER or QZLOG_NEVER, with its text.
class Failure : public std::runtime_error {
 public:
  Failure(qzlog_outcome outcome, const std::string& text) : std::runtime_error(text), outcome_(outcome) {}
  qzlog_outcome outcome() const noexcept { return outcome_; }

 private:
  qzlog_outcome outcome_;
};

[[noreturn]] inline void fail_for_now(const std::string& text) { throw Failure(QZLOG_LATER, text); }
[[noreturn]] inline void fail_for_good(const std::string& text) { throw Failure(QZLOG_NEVER, text); }

inline void set_error(qzlog_error& error, std::string_view text) noexcept {
  const std::size_t count = std::min(text.size(), sizeof error.text - 1);
  std::memcpy(error.text, text.data(), count);
  error.text[count] = '\0';
}

/// The body of a function of the interface: what it throws becomes an outcome.
template <class Function>
qzlog_outcome guarded(qzlog_error* error, Function&& function) noexcept {
  try {
    function();
    return QZLOG_DONE;
  } catch (const Failure& failure) {
    set_error(*error, failure.what());
    return failure.outcome();
  } catch (const std::bad_alloc&) {
    set_error(*error, "out of memory");
    return QZLOG_LATER;
  } catch (const std::exception& failure) {
    set_error(*error, failure.what());
    return QZLOG_NEVER;
  }
}

/// A plug-in is asked for everything that begins with its name and '+': what it does not know might have meant to be
/// encrypted.
inline void require_scheme(const qzlog_settings& settings, std::string_view plain, std::string_view encrypted) {
  const std::string_view scheme = settings.scheme;
  if (scheme == plain || (scheme == encrypted && !encrypted.empty())) return;
  std::string known(plain);
  known += "://";
  if (!encrypted.empty()) known.append(" or ").append(encrypted).append("://");
  fail_for_good("there is no scheme '" + std::string(scheme) + "': write " + known);
}

inline std::string_view view_of(const qzlog_text& text) noexcept { return {text.bytes, text.size}; }

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_PLUGIN_CALL_H
