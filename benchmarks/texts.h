// SPDX-License-Identifier: MIT
//
// The texts that the contestants of all rows are given, and what they return, as one kind of text.
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

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

// A text in one block from malloc behind a header, as KVBase keeps it, made and dropped bare: the work of a contestant
// called "floor".
class BareText {
 public:
  BareText(wchar const* text, std::size_t units, wchar const* more = KVW(""), std::size_t moreUnits = 0)
      : block_(static_cast<Header*>(std::malloc(sizeof(Header) + (units + moreUnits + 1) * sizeof(wchar)))) {
    *block_ = {1, static_cast<unsigned int>(units + moreUnits), {nullptr, nullptr}};
    std::memcpy(this->text(), text, units * sizeof(wchar));
    if (moreUnits != 0) std::memcpy(this->text() + units, more, moreUnits * sizeof(wchar));
    this->text()[units + moreUnits] = 0;
  }
  ~BareText() { std::free(block_); }
  BareText(BareText const&) = delete;
  BareText& operator=(BareText const&) = delete;

  friend u16string plain(BareText const& text) { return u16string(text.text(), text.block_->units); }

 private:
  struct Header {
    unsigned int references;
    unsigned int units;
    char* narrow[2];
  };
  wchar* text() const { return reinterpret_cast<wchar*>(block_ + 1); }

  Header* block_;
};

}  // namespace bench
}  // namespace KV_1_1
