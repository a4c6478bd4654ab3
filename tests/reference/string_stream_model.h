// SPDX-License-Identifier: MIT
//
// Model of a text's way into and out of a narrow stream, on plain bytes.
#pragma once

#include <iomanip>
#include <ios>

#include "tests/reference/string_text_model.h"

namespace KV_1_1 {
namespace reference {

// What a stream makes of bytes that are written as one item.
inline std::string padded(std::string const& bytes, std::size_t width, char fill, bool left) {
  std::string const filling(bytes.size() < width ? width - bytes.size() : 0, fill);
  return left ? bytes + filling : filling + bytes;
}

// A stream to read from: its bytes, how far it has been read, and its state.
struct Source {
  std::string bytes;
  std::size_t at = 0;
  std::ios_base::iostate state = std::ios_base::goodbit;

  bool good() const { return state == std::ios_base::goodbit; }
  // One char, whatever it is; false and a failed stream if there is none.
  bool take(char& c) {
    if (good() && at < bytes.size()) {
      c = bytes[at++];
      return true;
    }
    if (good()) state |= std::ios_base::eofbit;
    state |= std::ios_base::failbit;
    return false;
  }
  void skipWhite() {
    while (good() && at < bytes.size() && isWhite(bytes[at])) ++at;
    if (good() && at == bytes.size()) state |= std::ios_base::eofbit;
  }
  static bool isWhite(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
};

// The bytes of a token, before they are decoded.
inline std::string takeToken(Source& source) {
  char c = 0;
  source.skipWhite();
  source.take(c);
  std::string token;
  if (c != '"') {
    token += c;
    while (source.good() && source.take(c)) {
      if (Source::isWhite(c)) {
        --source.at;
        break;
      }
      token += c;
    }
  } else {
    while (source.good() && source.take(c) && c != '"') {
      if (c == '\\' && !source.take(c)) break;
      token += c;
    }
  }
  return token.substr(0, token.find('\0'));
}

}  // namespace reference
}  // namespace KV_1_1
