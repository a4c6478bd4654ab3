// SPDX-License-Identifier: MIT
//
// UTF-8 and UTF-16 the slow and obvious way, one character at a time.
#pragma once

#include <string>
#include <vector>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace reference {

constexpr char32_t kReplacement = 0xFFFD;

inline std::vector<char32_t> charactersOf(wstring const& units) {
  std::vector<char32_t> characters;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t const unit = units[i];
    bool const high = unit >= 0xD800 && unit <= 0xDBFF;
    bool const low = unit >= 0xDC00 && unit <= 0xDFFF;
    char32_t const next = i + 1 < units.size() ? units[i + 1] : 0;
    if (high && next >= 0xDC00 && next <= 0xDFFF) {
      characters.push_back(0x10000 + (unit - 0xD800) * 0x400 + (next - 0xDC00));
      ++i;
    } else {
      characters.push_back(high || low ? kReplacement : unit);
    }
  }
  return characters;
}

inline std::string toUtf8(wstring const& units) {
  std::string bytes;
  for (char32_t const c : charactersOf(units)) {
    if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else if (c < 0x800) {
      bytes += static_cast<char>(0xC0 + c / 0x40);
      bytes += static_cast<char>(0x80 + c % 0x40);
    } else if (c < 0x10000) {
      bytes += static_cast<char>(0xE0 + c / 0x1000);
      bytes += static_cast<char>(0x80 + c / 0x40 % 0x40);
      bytes += static_cast<char>(0x80 + c % 0x40);
    } else {
      bytes += static_cast<char>(0xF0 + c / 0x40000);
      bytes += static_cast<char>(0x80 + c / 0x1000 % 0x40);
      bytes += static_cast<char>(0x80 + c / 0x40 % 0x40);
      bytes += static_cast<char>(0x80 + c % 0x40);
    }
  }
  return bytes;
}

// The sequences that are well-formed, as the ranges of their bytes (the table of the Unicode standard).
struct WellFormed {
  int size;
  unsigned char from[4];
  unsigned char to[4];
};
constexpr WellFormed kWellFormed[] = {
    {1, {0x00, 0, 0, 0}, {0x7F, 0, 0, 0}},
    {2, {0xC2, 0x80, 0, 0}, {0xDF, 0xBF, 0, 0}},
    {3, {0xE0, 0xA0, 0x80, 0}, {0xE0, 0xBF, 0xBF, 0}},
    {3, {0xE1, 0x80, 0x80, 0}, {0xEC, 0xBF, 0xBF, 0}},
    {3, {0xED, 0x80, 0x80, 0}, {0xED, 0x9F, 0xBF, 0}},
    {3, {0xEE, 0x80, 0x80, 0}, {0xEF, 0xBF, 0xBF, 0}},
    {4, {0xF0, 0x90, 0x80, 0x80}, {0xF0, 0xBF, 0xBF, 0xBF}},
    {4, {0xF1, 0x80, 0x80, 0x80}, {0xF3, 0xBF, 0xBF, 0xBF}},
    {4, {0xF4, 0x80, 0x80, 0x80}, {0xF4, 0x8F, 0xBF, 0xBF}},
};

// Each longest piece that begins a well-formed sequence without completing it, and each byte that begins none, gives
// one replacement character.
inline wstring fromUtf8(std::string const& bytes) {
  wstring units;
  for (std::size_t at = 0; at < bytes.size();) {
    int longest = 0;
    bool complete = false;
    for (WellFormed const& form : kWellFormed) {
      int matched = 0;
      while (matched < form.size && at + static_cast<std::size_t>(matched) < bytes.size()) {
        unsigned char const byte = static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(matched)]);
        if (byte < form.from[matched] || byte > form.to[matched]) break;
        ++matched;
      }
      if (matched <= longest) continue;
      longest = matched;
      complete = matched == form.size;
    }
    char32_t c = kReplacement;
    if (complete) {
      constexpr unsigned char kPayloadOfLead[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
      c = static_cast<unsigned char>(bytes[at]) & kPayloadOfLead[longest];
      for (int i = 1; i < longest; ++i) {
        c = c * 0x40 + (static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]) & 0x3F);
      }
    }
    at += longest > 0 ? static_cast<std::size_t>(longest) : 1;
    if (c < 0x10000) {
      units += static_cast<wchar>(c);
    } else {
      units += static_cast<wchar>(0xD800 + (c - 0x10000) / 0x400);
      units += static_cast<wchar>(0xDC00 + (c - 0x10000) % 0x400);
    }
  }
  return units;
}

}  // namespace reference
}  // namespace KV_1_1
