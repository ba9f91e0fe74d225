// A list of attributes without its null pointer, for compilers to warn of.
#include <qzlog.h>

void log_it(qz_LOG_LogEntry& entry) { entry.SetEntry(1001, 3, "Free", 0); }
