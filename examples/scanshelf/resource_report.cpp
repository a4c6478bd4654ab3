// SPDX-License-Identifier: MIT
//
// This source asks the system for what the library does not tell about a module: which languages and versions there are.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>

#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/module_api.h"
#include "scanshelf.h"

namespace scanshelf {
namespace {

using Row = std::vector<String>;
using Languages = std::set<unsigned short>;

constexpr unsigned kLargestNumber = 0xFFFF;
constexpr unsigned kStringsPerBlock = 16;  // of a string table
constexpr unsigned short kNoLanguage = 0xFFFF;
constexpr std::size_t kSymbolsOfEach = 5;
constexpr int kTextWidth = 45;

struct Symbol {
  String name;
  unsigned number;

  bool isText() const { return name.startsWith(KVW("IDS_")); }
};

std::vector<Symbol> symbolsOf(Module const& module) {
  std::vector<Symbol> symbols;
  for (unsigned number = 0; number <= kLargestNumber; ++number) {
    for (String const& name : module.getResourceSymbols()[number]) symbols.push_back({name, number});
  }
  return symbols;
}

String languageText(unsigned short language) {
  wstring abbreviation;
  if (language == 0) return textOf(IDS_NEUTRAL);
  bool const isKnown = platform::locales().languageAbbreviation(language, abbreviation);
  return isKnown ? String(abbreviation.c_str()) : format(KVW("%u"), unsigned{language});
}

String joined(std::vector<String> const& texts) {
  String all = texts.front();
  for (std::size_t i = 1; i < texts.size(); ++i) all += KVW(", ") + texts[i];
  return all;
}

// The language that a module speaks which has a translation library: the one recorded, or one that was forced and that the
// system does not know.
String spokenLanguage(Module const& module) {
  unsigned short const language = GetCurrentLangId(module);
  return language != kNoLanguage ? languageText(language) : String(GetUsedLangAbbrevs().front().c_str());
}

// The file that an instance comes from, without its folder; the name of the module if the system does not tell.
String ownFile(Module const& module, HINSTANCE instance) {
  wstring path;
  if (instance == nullptr || !platform::modules().modulePath(instance, path)) return module.getModuleName();
  return File::fromString(path.c_str())->getName();
}

String lowerCase(String const& letters) {
  String lower;
  for (int i = 0; i < letters.length(); ++i) {
    bool const isUpper = letters[i] >= KVW('A') && letters[i] <= KVW('Z');
    lower += static_cast<wchar>(isUpper ? letters[i] + (KVW('a') - KVW('A')) : letters[i]);
  }
  return lower;
}

// The file of the translation library, seen from the folder of the module. The system keeps no path of a file that is
// mapped for its resources, so this is where the library looks first.
String translationFile(Module const& module, HINSTANCE instance) {
  String const name = module.getModuleName() + lowerCase(spokenLanguage(module)) + KVW(".dll");
  String const below = KVW("languages\\") + name;
  wstring path;
  if (!platform::modules().modulePath(instance, path)) return name;
  SmartPtr<Directory const> const folder = File::fromString(path.c_str())->getDirectory();
  auto const isThere = [&](String const& file) {
    return platform::modules().isReadable(folder->combine(File::fromString(file))->getFullName());
  };
  return isThere(below) && !isThere(name) ? below : name;
}

// The file version of the module or, with `localized`, of its translation library.
String versionText(Module const& module, bool localized) {
  constexpr std::size_t kFixedPart = 40;  // where the fixed part of a version resource begins
  constexpr std::size_t kFileVersion = 8;
  std::uint32_t version[2] = {};  // each has two numbers, the higher half first
  auto const [data, size] = module.getResource(1, platform::resourceId(platform::kVersionType), localized, nullptr);
  if (size < kFixedPart + kFileVersion + sizeof version) return textOf(IDS_NONE);
  std::memcpy(version, static_cast<char const*>(data) + kFixedPart + kFileVersion, sizeof version);
  return format(KVW("%u.%u.%u.%u"), version[0] >> 16, version[0] & 0xFFFF, version[1] >> 16, version[1] & 0xFFFF);
}

String languagesText(Languages const& languages) {
  std::vector<String> texts;
  for (unsigned short const language : languages) texts.push_back(languageText(language));
  return texts.empty() ? textOf(IDS_NONE) : joined(texts);
}

// The row of the table for one file.
Row fileRow(Module const& module, HINSTANCE instance, bool isTranslation, std::vector<Symbol> const& symbols) {
  Languages header;
  platform::modules().resourceLanguages(instance, KVW("METADATA"), KVW("RESOURCE.H"), header);
  Languages texts;
  for (Symbol const& symbol : symbols) {
    if (!symbol.isText()) continue;
    wchar const* const block = platform::resourceId(symbol.number / kStringsPerBlock + 1);
    platform::modules().resourceLanguages(instance, platform::resourceId(platform::kStringTableType), block, texts);
  }
  HINSTANCE const own = module.findResource(1, platform::resourceId(platform::kVersionType), false, nullptr);
  return {isTranslation ? String::EMPTY : module.getModuleName(),
          isTranslation ? translationFile(module, own) : ownFile(module, instance),
          versionText(module, /*localized=*/isTranslation),
          isTranslation ? String::EMPTY : countText(symbols.size()),
          languagesText(header),
          languagesText(texts)};
}

void addFiles(Module const& module, std::vector<Row>& rows, std::vector<String>& sentences) {
  wchar const* const version = platform::resourceId(platform::kVersionType);
  HINSTANCE const own = module.findResource(1, version, /*localized=*/false, nullptr);
  HINSTANCE const first = module.findResource(1, version, /*localized=*/true, nullptr);
  std::vector<Symbol> const symbols = symbolsOf(module);
  rows.push_back(fileRow(module, own, /*isTranslation=*/false, symbols));
  bool const isTranslated = first != own;
  if (isTranslated) rows.push_back(fileRow(module, first, /*isTranslation=*/true, symbols));
  sentences.push_back(isTranslated ? textOf(IDS_TRANSLATED, module.getModuleName(), spokenLanguage(module))
                                   : textOf(IDS_OWN_LANGUAGE, module.getModuleName()));
}

void addSymbols(Module const& module, bool all, std::vector<Row>& rows) {
  std::vector<Symbol> const symbols = symbolsOf(module);
  std::size_t const shown = all ? symbols.size() : std::min(symbols.size(), kSymbolsOfEach);
  for (std::size_t i = 0; i < shown; ++i) {
    auto const& [name, number] = symbols[i];
    rows.push_back({i == 0 ? module.getModuleName() : String::EMPTY, name, format(KVW("%u"), number)});
    if (!symbols[i].isText()) continue;
    rows.back().push_back(shorten(String::loadFromResource(number, module), kTextWidth));
  }
  if (shown < symbols.size()) {
    rows.push_back({String::EMPTY, textOf(IDS_COUNT_MORE, countText(symbols.size() - shown))});
  }
}

}  // namespace

void printResources(std::ostream& out, bool all) {
  std::vector<Row> files = {{textOf(IDS_COLUMN_MODULE), textOf(IDS_COLUMN_FILE), textOf(IDS_COLUMN_VERSION),
                             textOf(IDS_COLUMN_SYMBOLS), KVW("RESOURCE.H"), textOf(IDS_COLUMN_TEXTS)}};
  std::vector<Row> symbols = {
      {textOf(IDS_COLUMN_MODULE), textOf(IDS_COLUMN_SYMBOL), textOf(IDS_COLUMN_NUMBER), textOf(IDS_COLUMN_TEXT)}};
  std::vector<String> wanted;
  for (wstring const& abbreviation : GetUsedLangAbbrevs()) wanted.emplace_back(abbreviation.c_str());
  std::vector<String> sentences = {textOf(IDS_LANGUAGES_WANTED, joined(wanted))};
  for (Module const& module : Module::all()) {
    addFiles(module, files, sentences);
    addSymbols(module, all, symbols);
  }
  printLine(out, textOf(IDS_MODULES_TITLE));
  out << '\n';
  printTable(out, "lllrll", files);
  out << '\n';
  for (String const& sentence : sentences) printLine(out, sentence);
  out << '\n';
  printTable(out, "llrl", symbols);
}

}  // namespace scanshelf
