#ifndef QZLOG_BENCH_TEMPORARY_FOLDER_H
#define QZLOG_BENCH_TEMPORARY_FOLDER_H

#include <string>

namespace qzlog_bench {

/// A file of the program's own folder for temporary files, which is removed with everything in it at the end.
std::string temporary_file(const std::string& name);

/// The folder itself.
const std::string& temporary_folder();

/// Replaces the file's contents.
void write_file(const std::string& path, const std::string& bytes);

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_TEMPORARY_FOLDER_H
