#ifndef QZLOG_LINES_QUOTE_INDEX_H
#define QZLOG_LINES_QUOTE_INDEX_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qzlog {

/// Where the quotes of a text stand that no backslash escapes, found many characters at a time.
class QuoteIndex {
 public:
  /// Texts are read in pieces: so many bytes from the last piece's beginning have to be readable.
  static constexpr std::size_t kPieceBytes = 64;

  /// Gives the places of the quotes from the first to the last, and then the text's size. Valid until the next `read`.
  class Places {
   public:
    explicit Places(const std::uint64_t* pieces) : pieces_(pieces), quotes_(*pieces) {}

    std::size_t next() {
      while (quotes_ == 0) {
        quotes_ = *++pieces_;
        offset_ += kPieceBytes;
      }
      const auto place = static_cast<std::size_t>(std::countr_zero(quotes_));
      quotes_ &= quotes_ - 1;
      return offset_ + place;
    }

   private:
    const std::uint64_t* pieces_;
    std::uint64_t quotes_;  // of the current piece, without those given out
    std::size_t offset_ = 0;
  };

  /// Makes room for texts of so many bytes.
  void reserve(std::size_t size) {
    if (size / kPieceBytes >= pieces_.size()) pieces_.resize(size / kPieceBytes + 1);
  }

  /// Reads `size` bytes, and what follows them to the end of the last piece. False when a control character
  /// is among them. Room for them has to be there.
  bool read(const char* text, std::size_t size);

  Places places() const { return Places(pieces_.data()); }
  /// Whether bytes of 0x80 and above were read.
  bool has_high_bytes() const { return has_high_bytes_; }
  bool has_backslashes() const { return has_backslashes_; }

 private:
  std::vector<std::uint64_t> pieces_;  // a bit for each character of a piece
  bool has_high_bytes_ = false;
  bool has_backslashes_ = false;
};

}  // namespace qzlog

#endif  // QZLOG_LINES_QUOTE_INDEX_H
