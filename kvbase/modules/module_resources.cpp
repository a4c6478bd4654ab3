// SPDX-License-Identifier: MIT
#include <cstdint>
#include <istream>
#include <set>
#include <streambuf>

#include "kvbase/modules/module.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/strings/internal/string_access.h"

namespace KV_1_1 {

namespace {

constexpr ulong32 kPrimaryLanguageMask = 0x3FF;
constexpr ulong32 kSortMask = 0xF0000;

wchar const* textOrNull(String const& name) {
  StringVal const* const payload = StringAccess::payload(name);
  return payload != nullptr ? payload->stringValue() : nullptr;
}

// The language to take of those in which a resource exists; 0 if none decides.
std::uint16_t choose(std::set<unsigned short> const& languages, ulong32 wanted) {
  if (languages.size() == 1) return *languages.begin();
  auto const language = static_cast<std::uint16_t>(wanted);
  if (languages.count(language) != 0) return language;
  auto const primary = static_cast<std::uint16_t>(language & kPrimaryLanguageMask);
  return languages.count(primary) != 0 ? primary : std::uint16_t(0);
}

// Another locale of the thread for a scope.
class ScopedThreadLocale {
 public:
  ScopedThreadLocale(ulong32 present, ulong32 locale) : present_(present), changed_(locale != present) {
    if (changed_) platform::locales().setThreadLocale(locale);
  }
  ~ScopedThreadLocale() {
    if (changed_) platform::locales().setThreadLocale(present_);
  }
  ScopedThreadLocale(ScopedThreadLocale const&) = delete;
  ScopedThreadLocale& operator=(ScopedThreadLocale const&) = delete;

 private:
  ulong32 present_;
  bool changed_;
};

// Puts the thread's locale back at the end of a scope if it has changed.
class ThreadLocaleKeeper {
 public:
  ThreadLocaleKeeper() : noted_(platform::locales().threadLocale()) {}
  ~ThreadLocaleKeeper() {
    if (platform::locales().threadLocale() != noted_) platform::locales().setThreadLocale(noted_);
  }
  ThreadLocaleKeeper(ThreadLocaleKeeper const&) = delete;
  ThreadLocaleKeeper& operator=(ThreadLocaleKeeper const&) = delete;

  ulong32 noted() const { return noted_; }

 private:
  ulong32 noted_;
};

// The version that the rules for `locale` give, instead of the one that the system has found.
HRSRC versionFor(ulong32& locale, HINSTANCE instance, HRSRC found, wchar const* name, wchar const* type) {
  platform::LocaleApi& locales = platform::locales();
  if (locale == 0) locale = locales.threadLocale();
  std::set<unsigned short> languages;
  bool const enumerated = platform::modules().resourceLanguages(instance, type, name, languages);
  std::uint16_t const language = enumerated && !languages.empty() ? choose(languages, locale) : std::uint16_t(0);
  ulong32 const present = locales.threadLocale();
  locale = present;
  if (language == 0) return found;

  ulong32 const chosen = language | (present & kSortMask);
  ScopedThreadLocale const scope(present, chosen);
  HRSRC const version = platform::modules().findResourceOfLanguage(instance, type, name, language);
  if (version == nullptr) return found;
  locale = chosen;
  return version;
}

}  // namespace

Module::FoundResource Module::findResourceImpl(wchar const* name, wchar const* type, bool localized,
                                               ulong32* const locale) const {
  if (name == nullptr) return FoundResource();
  HINSTANCE const instance = localized ? resourceModule_ : codeModule_;
  HRSRC const found = platform::modules().findResource(instance, name, type);
  if (found == nullptr) return localized ? findResourceImpl(name, type, false, locale) : FoundResource();
  if (locale == nullptr) return {instance, found};
  return {instance, versionFor(*locale, instance, found, name, type)};
}

std::pair<void*, ulong32> Module::getResourceImpl(wchar const* name, wchar const* type, bool localized,
                                                  ulong32* const locale) const {
  FoundResource const found = findResourceImpl(name, type, localized, locale);
  if (found.second == nullptr) return std::pair<void*, ulong32>();
  platform::ResourceBytes const bytes = platform::modules().resourceBytes(found.first, found.second);
  if (bytes.data == nullptr || bytes.size == 0) return std::pair<void*, ulong32>();
  return {bytes.data, bytes.size};
}

KVBASE_DEPRECATED_NAMES_BEGIN

std::auto_ptr<std::basic_istream<char>> Module::loadResourceImpl(wchar const* name, wchar const* type,
                                                                 bool localized) const {
  // Reads the resource where it lies.
  class streambuf : public std::basic_streambuf<char> {
   public:
    streambuf(char* first, char* end) { setg(first, first, end); }
    ~streambuf() override = default;
  };
  class istream : public std::basic_istream<char> {
   public:
    explicit istream(std::unique_ptr<streambuf> buffer)
        : std::basic_istream<char>(buffer.get()), buffer_(buffer.release()) {}
    ~istream() override { delete buffer_; }
    istream(istream const&) = delete;
    istream& operator=(istream const&) = delete;

   private:
    streambuf* buffer_;
  };

  using Stream = std::auto_ptr<std::basic_istream<char>>;
  ulong32 locale = 0;
  std::pair<void*, ulong32> const bytes = getResourceImpl(name, type, localized, &locale);
  if (bytes.first == nullptr || bytes.second == 0) return Stream();
  ThreadLocaleKeeper const keeper;
  if (locale != 0 && locale != keeper.noted()) platform::locales().setThreadLocale(locale);
  char* const first = static_cast<char*>(bytes.first);
  return Stream(new istream(std::make_unique<streambuf>(first, first + bytes.second)));
}

std::auto_ptr<std::basic_istream<char>> Module::loadResource(String const& name, wchar const* type,
                                                             bool localized) const {
  return loadResourceImpl(textOrNull(name), type, localized);
}

std::auto_ptr<std::basic_istream<char>> Module::loadResource(unsigned int id, wchar const* type, bool localized) const {
  return loadResourceImpl(platform::resourceId(id), type, localized);
}

std::string Module::loadStringResource(String const& name, wchar const* type, bool localized) const {
  std::auto_ptr<std::basic_istream<char>> const stream = loadResourceImpl(textOrNull(name), type, localized);
  std::basic_streambuf<char>& buffer = *stream->rdbuf();
  std::streamsize const size = buffer.in_avail();
  std::string bytes(static_cast<std::size_t>(size), '\0');
  buffer.sgetn(&bytes[0], size);
  return bytes;
}

KVBASE_DEPRECATED_NAMES_END

HINSTANCE Module::findResource(String const& name, wchar const* type, bool localized, ulong32* const locale) const {
  return findResourceImpl(textOrNull(name), type, localized, locale).first;
}

HINSTANCE Module::findResource(unsigned int id, wchar const* type, bool localized, ulong32* const locale) const {
  return findResourceImpl(platform::resourceId(id), type, localized, locale).first;
}

std::pair<void*, ulong32> Module::getResource(String const& name, wchar const* type, bool localized,
                                              ulong32* const locale) const {
  return getResourceImpl(textOrNull(name), type, localized, locale);
}

std::pair<void*, ulong32> Module::getResource(unsigned int id, wchar const* type, bool localized,
                                              ulong32* const locale) const {
  return getResourceImpl(platform::resourceId(id), type, localized, locale);
}

}  // namespace KV_1_1
