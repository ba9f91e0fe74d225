#ifndef STORAGE_ATTEMPT_H
#define STORAGE_ATTEMPT_H

#include <qzlog.h>

#include <iostream>

inline void print_refusal(const char* exception_class, const qz_EXCEPTION_base& error) {
  const char* const message = error.get_message();
  std::cout << "    " << exception_class << ": " << (message != nullptr ? message : "") << '\n';
}

/// Prints what is attempted and how the library refuses it. A handler has to name the exceptions that it wants to tell
/// apart, for they have no common virtual function; QZX_logging_all catches them all.
template <typename Action>
void attempt(const char* what, Action action) {
  std::cout << "  " << what << '\n';
  try {
    action();
    std::cout << "    accepted\n";
  } catch (const QZX_logging_attribute_type_mismatch& error) {
    print_refusal("QZX_logging_attribute_type_mismatch", error);
  } catch (const QZX_logging_invalid_attribute_name& error) {
    print_refusal("QZX_logging_invalid_attribute_name", error);
  } catch (const QZX_logging_invalid_attribute_value& error) {
    print_refusal("QZX_logging_invalid_attribute_value", error);
  } catch (const QZX_logging_attribute_not_found& error) {
    print_refusal("QZX_logging_attribute_not_found", error);
  } catch (const QZX_logging_entry_type_not_found& error) {
    print_refusal("QZX_logging_entry_type_not_found", error);
  } catch (const QZX_logging_internal_error& error) {
    print_refusal("QZX_logging_internal_error", error);
  } catch (const QZX_logging_all& error) {
    print_refusal("QZX_logging_all", error);
  }
}

#endif  // STORAGE_ATTEMPT_H
