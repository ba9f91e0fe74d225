/// libgettextpo itself loses a few bytes for each mistake in a file; the address sanitizer asks this function what to
/// overlook.
extern "C" const char* __lsan_default_suppressions() { return "leak:libgettextpo\n"; }  // NOLINT: the sanitizer's name
