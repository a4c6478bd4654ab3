// SPDX-License-Identifier: MIT
//
// Strings: conversion to and from UTF-8 and single-byte code pages.
#include <algorithm>
#include <cwchar>
#include <locale>
#include <random>
#include <string>

#include "benchmarks/support.h"
#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr int kSizes[] = {24, 64, 8192};
constexpr unsigned int kWesternPage = 1252;

std::string sized(std::string const& row, int size) {
  return "encoding: " + row + ", " + std::to_string(size);
}

// --- Texts in one script, `length` code units long -------------------------------------------------------------------

u16string asciiText(int length) {
  return sampleText(length);
}

// Every third unit is a Latin-1 character outside ASCII.
u16string latinText(int length) {
  u16string text = sampleText(length);
  for (std::size_t i = 0; i < text.size(); i += 3) text[i] = static_cast<wchar>(0xC0 + text[i] % 64);
  return text;
}

u16string cjkText(int length) {
  std::mt19937 random(1);
  u16string text;
  for (int i = 0; i < length; ++i) text += static_cast<wchar>(0x4E00 + random() % 0x5000);
  return text;
}

// Surrogate pairs only.
u16string emojiText(int length) {
  std::mt19937 random(1);
  u16string text;
  for (int i = 0; i < length; i += 2) {
    text += KVW('\xD83D');
    text += static_cast<wchar>(0xDE00 + random() % 80);
  }
  return text;
}

struct Script {
  char const* name;
  u16string (*text)(int length);
};
constexpr Script kScripts[] = {{"ASCII", asciiText}, {"Latin-1", latinText}, {"CJK", cjkText}, {"emoji", emojiText}};

// --- UTF-8 -----------------------------------------------------------------------------------------------------------

// That of wchar_t converts to the code page of the locale, whatever the size of its units.
using Utf8Facet = std::codecvt<char16_t, char, std::mbstate_t>;

std::string facetToUtf8(u16string const& text) {
  auto const& facet = std::use_facet<Utf8Facet>(std::locale::classic());
  std::string bytes(3 * text.size(), '\0');
  std::mbstate_t state = {};
  char16_t const* const units = reinterpret_cast<char16_t const*>(text.data());
  char16_t const* next = nullptr;
  char* end = nullptr;
  facet.out(state, units, units + text.size(), next, bytes.data(), bytes.data() + bytes.size(), end);
  bytes.resize(static_cast<std::size_t>(end - bytes.data()));
  return bytes;
}

u16string facetFromUtf8(std::string const& bytes) {
  auto const& facet = std::use_facet<Utf8Facet>(std::locale::classic());
  u16string text(bytes.size(), KVW('\0'));
  std::mbstate_t state = {};
  char const* next = nullptr;
  char16_t* const units = reinterpret_cast<char16_t*>(text.data());
  char16_t* end = nullptr;
  facet.in(state, bytes.data(), bytes.data() + bytes.size(), next, units, units + text.size(), end);
  text.resize(static_cast<std::size_t>(end - units));
  return text;
}

// A String caches its UTF-8 copy, so each conversion is timed on a new String.
void addToUtf8(Script const& script, int size) {
  u16string const text = script.text(size);
  require(static_cast<int>(text.size()) == size, "UTF-8: the text has the given size");
  int const batch = size <= 64 ? 500 : 16;
  Row(sized(std::string("to UTF-8, ") + script.name, size))
      .addFresh(
          "KVBase", batch, [text] { return make<String>(text); }, [](String const& a) { return a.stringUTF8(); })
      .addFresh(PEER(
          "QString", batch, [text] { return make<QString>(text); }, [](QString const& a) { return a.toUtf8(); }))
      .addFresh(PEER(
          "UnicodeString", batch, [text] { return make<UnicodeString>(text); },
          [](UnicodeString const& a) {
            std::string bytes;
            a.toUTF8String(bytes);
            return bytes;
          }))
      .addFresh(PEER(
          "boost", batch, [text] { return text; }, [](u16string const& a) { return utf_to_utf<char>(a); }))
      .addFresh(
          "codecvt", batch, [text] { return text; }, facetToUtf8);
}

void addFromUtf8(Script const& script, int size) {
  std::string const bytes = facetToUtf8(script.text(size));
  require(facetFromUtf8(bytes) == script.text(size), "UTF-8: the conversion back gives the same text");
  Row(sized(std::string("from UTF-8, ") + script.name, size))
      .add("KVBase", [bytes] { return String(UTF8Interface(bytes.c_str())); })
      .add(PEER("QString", [bytes] { return QString::fromUtf8(bytes.c_str()); }))
      .add(PEER("UnicodeString", [bytes] { return UnicodeString::fromUTF8(bytes.c_str()); }))
      .add(PEER("boost", [bytes] { return utf_to_utf<wchar>(bytes); }))
      .add("codecvt", [bytes] { return facetFromUtf8(bytes); });
}

void addCachedCopy() {
  u16string const text = latinText(64);
  String const own = make<String>(text);
  require(own.stringUTF8() == own.stringUTF8(), "cached copy: the second call converts nothing");
  Row("encoding: to UTF-8, second call")
      .add("KVBase", [own] { return own.stringUTF8(); })
      .add("std::string kept", [kept = facetToUtf8(text)] { return kept.c_str(); });
}

// --- A single-byte code page -----------------------------------------------------------------------------------------

std::string latinBytes(u16string const& text) {
  std::string bytes;
  for (wchar unit : text) bytes += static_cast<char>(unit);
  return bytes;
}

u16string widened(std::string const& bytes) {
  u16string text(bytes.size(), KVW('\0'));
  std::transform(bytes.begin(), bytes.end(), text.begin(), [](char byte) { return static_cast<unsigned char>(byte); });
  return text;
}

void addFromPage(int size) {
  std::string const bytes = latinBytes(latinText(size));
  require(widened(bytes) == latinText(size), "code page: the conversion back gives the same text");
  Row(sized("from a one-byte page", size))
      .add("KVBase", [bytes] { return String(CodePageInterface(bytes.c_str(), kWesternPage)); })
      .add(PEER("QString", [bytes] { return QString::fromLatin1(bytes.c_str()); }))
      .add("widened", [bytes] { return widened(bytes); })
      .add(PEER("UnicodeString",
                [bytes, converter = icuConverter("windows-1252")] {
                  UErrorCode error = U_ZERO_ERROR;
                  return UnicodeString(bytes.data(), static_cast<int>(bytes.size()), converter.get(), error);
                }))
      .add(PEER("floor", [bytes] { return bareFromPage(bytes.c_str()); }));
}

// In two calls, the first for the size, as a String builds its narrow copy.
NarrowText encodedInPage(String const& text) {
  platform::TextApi& api = platform::text();
  NarrowText narrow(api.encode(kWesternPage, text, text.length(), nullptr, 0));
  api.encode(kWesternPage, text, text.length(), narrow.bytes.get(), narrow.size);
  return narrow;
}

void addToPage(int size) {
  u16string const text = latinText(size);
  Row(sized("to a one-byte page", size))
      .add("KVBase", [a = make<String>(text)] { return encodedInPage(a); })
      .add(WINDOWS_PEER("WideCharToMultiByte",
                        [text] {
                          int const units = static_cast<int>(text.size());
                          auto const encode = [&](char* bytes, int capacity) {
                            return WideCharToMultiByte(kWesternPage, 0, text.data(), units, bytes, capacity, nullptr,
                                                       nullptr);
                          };
                          NarrowText narrow(encode(nullptr, 0));
                          encode(narrow.bytes.get(), narrow.size);
                          return narrow;
                        }))
      .add(PEER("QString", [a = make<QString>(text)] { return a.toLatin1(); }))
      .add(PEER("UnicodeString",
                [a = make<UnicodeString>(text), converter = icuConverter("windows-1252")] {
                  NarrowText narrow(a.length());
                  UErrorCode error = U_ZERO_ERROR;
                  a.extract(narrow.bytes.get(), narrow.size, converter.get(), error);
                  return narrow;
                }))
      .add(PEER("floor", [text] { return bareToPage(text); }));
}

}  // namespace

void addStringEncoding() {
  for (Script const& script : kScripts) {
    for (int size : kSizes) addToUtf8(script, size);
  }
  for (Script const& script : kScripts) {
    for (int size : kSizes) addFromUtf8(script, size);
  }
  addCachedCopy();
  for (int size : {64, 8192}) {
    addFromPage(size);
    addToPage(size);
  }
}

}  // namespace bench
}  // namespace KV_1_1
