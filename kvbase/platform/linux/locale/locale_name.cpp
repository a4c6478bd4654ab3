// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/locale/locale_name.h"

#include <stdio.h>
#include <string.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <mutex>

#include "kvbase/platform/linux/locale/language_table.h"

namespace KV_1_1 {
namespace platform {

namespace {

// No name that a system installs comes near it.
constexpr std::size_t kLongestName = 127;

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// A piece of the name; empty if the name does not have it.
struct Piece {
  char const* begin;
  std::size_t size;

  bool consistsOf(bool (*isOfKind)(char)) const { return std::all_of(begin, begin + size, isOfKind); }
  bool equals(char const* text) const { return strlen(text) == size && memcmp(begin, text, size) == 0; }
};

constexpr Piece kNoPiece = {"", 0};

// language[_Script][_REGION][.charset][@modifier]
class LocaleName {
 public:
  // False if the text is not of that form.
  bool parse(Piece text) {
    bool const isGraphic = text.consistsOf([](char c) { return c > ' ' && c <= '~'; });
    if (text.size > kLongestName || !isGraphic) return false;
    next_ = text.begin;
    end_ = text.begin + text.size;
    language_ = takeUntil("_-.@");
    if (language_.size < 2 || language_.size > 3 || !language_.consistsOf(&isLetter)) return false;
    if (next_ != end_ && !isSuffix() && !parseRegion()) return false;
    if (next_ != end_ && !isSuffix()) return false;
    if (next_ != end_ && *next_ == '.') takeUntil("@");
    parseModifier();
    return true;
  }

  // Writes the name as ICU wants it.
  using Buffer = char[32];
  void print(bool withRegion, Buffer& name) const {
    int n = snprintf(name, sizeof name, "%.*s", static_cast<int>(language_.size), language_.begin);
    auto const add = [&](Piece piece) {
      if (piece.size == 0) return;
      n += snprintf(name + n, sizeof name - static_cast<std::size_t>(n), "_%.*s", static_cast<int>(piece.size),
                    piece.begin);
    };
    add(script_);
    if (!withRegion) return;
    add(region_);
    add(variant_);
  }

 private:
  bool isSuffix() const { return *next_ == '.' || *next_ == '@'; }

  Piece takeUntil(char const* ends) {
    char const* const begin = next_;
    while (next_ != end_ && strchr(ends, *next_) == nullptr) ++next_;
    return {begin, static_cast<std::size_t>(next_ - begin)};
  }

  // The script, the region or both, each behind a separator.
  bool parseRegion() {
    ++next_;
    Piece piece = takeUntil("_-.@");
    if (piece.size == 4 && piece.consistsOf(&isLetter)) {
      script_ = piece;
      if (next_ == end_ || isSuffix()) return true;
      ++next_;
      piece = takeUntil(".@");
    }
    region_ = piece;
    return (piece.size == 2 && piece.consistsOf(&isLetter)) || (piece.size == 3 && piece.consistsOf(&isDigit));
  }

  // Modifiers that name no script, such as "euro", do not concern the language.
  void parseModifier() {
    if (next_ == end_) return;
    Piece const modifier = {next_ + 1, static_cast<std::size_t>(end_ - next_ - 1)};
    static constexpr struct {
      char const* modifier;
      char const* script;
    } kScripts[] = {{"latin", "Latn"}, {"cyrillic", "Cyrl"}};
    for (auto const& entry : kScripts) {
      if (modifier.equals(entry.modifier)) script_ = {entry.script, 4};
    }
    if (!modifier.equals("valencia")) return;
    variant_ = {"VALENCIA", 8};
    // Translations have the name "ca@valencia", but ICU knows the variant only together with its region.
    if (region_.size == 0) region_ = {"ES", 2};
  }

  char const* next_ = nullptr;
  char const* end_ = nullptr;
  Piece language_ = kNoPiece;
  Piece script_ = kNoPiece;
  Piece region_ = kNoPiece;
  Piece variant_ = kNoPiece;
};

// The id of a name for ICU, if the table has it.
Language const* languageOf(char const* name) {
  return findLanguage(uloc_getLCID(name));
}

// The language of the name completed by its likely script and region. ICU knows many ids only without a script, and gives
// the neutral id with one, so the result counts only if it is not neutral.
Language const* likelyLanguageOf(char const* name) {
  char likely[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  uloc_addLikelySubtags(name, likely, sizeof likely, &status);
  bool const isComplete = U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING;
  Language const* const language = isComplete ? languageOf(likely) : nullptr;
  return language != nullptr && !language->isNeutral() ? language : nullptr;
}

std::uint16_t languageOf(LocaleName const& locale) {
  LocaleName::Buffer whole;
  locale.print(/*withRegion=*/true, whole);
  // Of a language with several scripts, ICU has a neutral id or the wrong script unless the name is complete.
  Language const* language = likelyLanguageOf(whole);
  if (language == nullptr) language = languageOf(whole);
  if (language == nullptr) {
    LocaleName::Buffer withoutRegion;
    locale.print(/*withRegion=*/false, withoutRegion);
    language = likelyLanguageOf(withoutRegion);
    if (language == nullptr) language = languageOf(withoutRegion);
  }
  return language == nullptr ? kNoLanguage : language->standard;
}

// The name that was asked for last, and its language: a program asks for that of its user again and again, which takes
// microseconds.
class LastName {
 public:
  bool find(Piece name, std::uint16_t& language) {
    std::lock_guard<std::mutex> const guard(mutex_);
    if (name.size != size_ || memcmp(name.begin, name_, name.size) != 0) return false;
    language = language_;
    return true;
  }
  // REQUIRES: a name has been parsed of it.
  void keep(Piece name, std::uint16_t language) {
    std::lock_guard<std::mutex> const guard(mutex_);
    memcpy(name_, name.begin, name.size);
    size_ = name.size;
    language_ = language;
  }

 private:
  std::mutex mutex_;
  char name_[kLongestName] = {};
  std::size_t size_ = 0;  // no name has this size
  std::uint16_t language_ = kNoLanguage;
};

// Constant-initialised, and its destructor does nothing.
LastName lastName;

}  // namespace

bool isPortableLocale(char const* name, std::size_t size) {
  auto const* const charset = static_cast<char const*>(memchr(name, '.', size));
  Piece const locale = {name, charset == nullptr ? size : static_cast<std::size_t>(charset - name)};
  return locale.equals("C") || locale.equals("POSIX");
}

std::uint16_t languageOfLocaleName(char const* name, std::size_t size) {
  if (isPortableLocale(name, size)) return kAmericanEnglish;
  LocaleName locale;
  if (!locale.parse({name, size})) return kNoLanguage;
  std::uint16_t language = kNoLanguage;
  if (lastName.find({name, size}, language)) return language;
  language = languageOf(locale);
  lastName.keep({name, size}, language);
  return language;
}

}  // namespace platform
}  // namespace KV_1_1
