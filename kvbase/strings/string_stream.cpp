// SPDX-License-Identifier: MIT
#include <cctype>
#include <istream>
#include <ostream>
#include <string>

#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

// Restores the flags of a stream at the end of a scope.
class FlagsRestorer {
 public:
  explicit FlagsRestorer(std::ios_base& stream) : stream_(stream), flags_(stream.flags()) {}
  ~FlagsRestorer() { stream_.flags(flags_); }
  FlagsRestorer(FlagsRestorer const&) = delete;
  FlagsRestorer& operator=(FlagsRestorer const&) = delete;

 private:
  std::ios_base& stream_;
  std::ios_base::fmtflags flags_;
};

// Reads up to white space, which stays in the stream.
std::string readWord(std::istream& stream, char first) {
  std::string word(1, first);
  while (stream.good()) {
    char next = 0;
    stream >> next;
    if (std::isspace(static_cast<unsigned char>(next)) != 0) {
      stream.putback(next);
      break;
    }
    if (stream.good()) word.push_back(next);
  }
  return word;
}

// Reads up to the closing quote and takes that from the stream. A backslash is dropped and protects the char behind it.
std::string readQuoted(std::istream& stream) {
  std::string text;
  while (stream.good()) {
    char next = 0;
    stream >> next;
    bool const isProtected = next == '\\';
    if (isProtected) stream >> next;
    if (!stream.good() || (next == '"' && !isProtected)) break;
    text.push_back(next);
  }
  return text;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, String const& text) {
  return text.length() > 0 ? stream << text.stringAnsi() : stream;
}

std::istream& operator>>(std::istream& stream, String& text) {
  text = String::NIL;
  char first = 0;
  stream >> std::ws >> first;
  FlagsRestorer const restorer(stream);
  stream.unsetf(std::ios_base::skipws);
  std::string const bytes = first == '"' ? readQuoted(stream) : readWord(stream, first);
  text = String(CodePageInterface(bytes.c_str(), 0));
  return stream;
}

}  // namespace KV_1_1
