// SPDX-License-Identifier: MIT
//
// Decodes arbitrary bytes by several code pages, with a length and with a terminator, and encodes arbitrary units.
#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

constexpr unsigned int kPages[] = {0,     1250,  1251, 1252, 1253,  932,  936,  950,
                                   20127, 28591, 437,  850,  65001, 1200, 99999};

void release(StringVal* payload) {
  if (payload != nullptr) payload->unref();
}

bool hasLoneSurrogate(wstring const& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool const high = (text[i] & 0xFC00) == 0xD800;
    bool const low = (text[i] & 0xFC00) == 0xDC00;
    if (high && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
      ++i;
    } else if (high || low) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  unsigned int const page = kPages[input.below(sizeof kPages / sizeof *kPages)];
  fuzzing::Input again = input;

  std::string const bytes = input.bytes();
  CodePageInterface const narrow(bytes.c_str(), page);
  String const text(narrow);
  text.stringAnsi();
  text.stringUTF8();
  release(StringVal::constructUsingCodepage(narrow, static_cast<int>(bytes.size()), -1));
  release(StringVal::construct(bytes.c_str(), static_cast<int>(bytes.size()), -1));

  wstring const units = again.units();
  String const wide(units.c_str());
  if (!hasLoneSurrogate(wstring(wide))) {
    fuzzing::require(String(UTF8Interface(wide.stringUTF8())) == wide, "a text survives UTF-8 and back");
  }
  wide.stringAnsi();
  return 0;
}
