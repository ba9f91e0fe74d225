#include "ship/otlp/gzip.h"

#include <zlib.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace qzlog_ship {

namespace {

constexpr int kGzipWindowBits = 15 + 16;
constexpr int kMemoryLevel = 8;

}  // namespace

void compress(std::string_view bytes, std::string& compressed) {
  z_stream stream = {};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kGzipWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, int (*)(z_stream*)> ended(&stream, deflateEnd);
  compressed.resize(deflateBound(&stream, bytes.size()));
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));  // zlib only reads from there
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
  stream.avail_out = static_cast<uInt>(compressed.size());
  if (bytes.size() > stream.avail_in || deflate(&stream, Z_FINISH) != Z_STREAM_END) {
    throw std::runtime_error("zlib does not compress a request");
  }
  compressed.resize(stream.total_out);
}

}  // namespace qzlog_ship
