// SPDX-License-Identifier: MIT
//
// The texts that the contestants of all rows are given, and what they return, as one kind of text.
#pragma once

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "kvbase/kvbase.h"

namespace KV_1_1 {
namespace bench {

// The text of the standard library with units of 16 bits: on Windows this is std::wstring.
using u16string = KV_1_1::wstring;

// The result of a comparison, of which only the sign is significant.
struct Order {
  int value;
};

// Results converted to texts, to compare them.
u16string plain(String const& text);
u16string plain(std::string const& text);
// Without this overload a pointer would convert to bool.
u16string plain(char const* text);
u16string plain(u16string const& text);
u16string plain(std::shared_ptr<u16string const> const& text);
u16string plain(Order order);
u16string plain(long long number);
inline u16string plain(int number) {
  return plain(static_cast<long long>(number));
}
inline u16string plain(bool truth) {
  return plain(truth ? 1LL : 0LL);
}

// Contestants return path texts with either separator; the comparison uses slashes.
u16string withSlashes(u16string text);

// `length` random lower-case letters, about as frequent as in English; j, q, x and z never occur. The same seed gives
// the same text.
u16string sampleText(int length, unsigned int seed = 1);

// A text of any class with these units. Texts of two calls share no storage.
template <class Text>
Text make(u16string const& units) {
  return Text(units.data(), static_cast<int>(units.size()));
}
template <>
inline u16string make<u16string>(u16string const& units) {
  return units;
}

// A text in one block from malloc behind a header with an atomic count of owners, as KVBase keeps it, bare: the work of a
// contestant called "floor".
class BareText {
 public:
  // So many units and their terminator are left to the caller to write.
  explicit BareText(std::size_t units) : block_(new (std::malloc(sizeof(Block) + (units + 1) * sizeof(wchar))) Block) {
    block_->units = static_cast<unsigned int>(units);
  }
  BareText(wchar const* text, std::size_t units, wchar const* more = KVW(""), std::size_t moreUnits = 0)
      : BareText(units + moreUnits) {
    std::memcpy(this->text(), text, units * sizeof(wchar));
    if (moreUnits != 0) std::memcpy(this->text() + units, more, moreUnits * sizeof(wchar));
    this->text()[units + moreUnits] = 0;
  }
  // Shares the block.
  BareText(BareText const& other) : block_(other.block_) { ++block_->owners; }
  BareText(BareText&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  ~BareText() {
    if (block_ != nullptr && block_->owners-- == 1) std::free(block_);
  }
  BareText& operator=(BareText const&) = delete;

  // Ends the text that the caller has written.
  void finish(wchar* end) {
    *end = 0;
    block_->units = static_cast<unsigned int>(end - text());
  }

  wchar* text() const { return reinterpret_cast<wchar*>(block_ + 1); }
  std::size_t size() const { return block_->units; }

 private:
  struct Block {
    std::atomic<unsigned int> owners{1};
    unsigned int units = 0;
    char* narrow[2] = {nullptr, nullptr};
  };

  Block* block_;
};

inline u16string plain(BareText const& text) {
  return u16string(text.text(), text.size());
}

// Narrow text in an array of its size, which the caller fills, as a String keeps its narrow copies.
struct NarrowText {
  explicit NarrowText(int units) : size(units), bytes(new char[static_cast<std::size_t>(units)]) {}

  int size;
  std::unique_ptr<char[]> bytes;
};

inline u16string plain(NarrowText const& text) {
  return plain(std::string(text.bytes.get(), static_cast<std::size_t>(text.size)));
}

}  // namespace bench
}  // namespace KV_1_1
