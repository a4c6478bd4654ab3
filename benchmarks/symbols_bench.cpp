// SPDX-License-Identifier: MIT
//
// Tables of symbols: the text of a header into names and numbers, and back.
//
// The plain peer does what a program would write without further thought: a map by name that ignores case and a multimap by
// number. Qt's has two hashes, by the lower-case name and by number.
#include <algorithm>
#include <charconv>
#include <cwctype>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/support.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace bench {

namespace {

constexpr unsigned int kMissing = 0xFFFFFFFF;

// By the C library, unit by unit.
struct IgnoringCase {
  bool operator()(u16string const& a, u16string const& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](wchar x, wchar y) { return std::towlower(x) < std::towlower(y); });
  }
};

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// The name and the value of a line; empty if it defines nothing.
struct Definition {
  std::string_view name;
  std::string_view value;
};

Definition definitionOf(std::string_view line) {
  Definition definition;
  std::size_t at = line.find("#define");
  if (at == std::string_view::npos) return definition;
  at += 7;
  for (std::string_view* word : {&definition.name, &definition.value}) {
    while (at < line.size() && isBlank(line[at])) ++at;
    std::size_t const start = at;
    while (at < line.size() && !isBlank(line[at])) ++at;
    *word = line.substr(start, at - start);
  }
  return definition;
}

// The number of a value that is one; false if it is a name.
bool isNumber(std::string_view value, unsigned int& number) {
  return std::from_chars(value.data(), value.data() + value.size(), number).ptr != value.data();
}

class PlainTable {
 public:
  void parse(std::istream& stream) {
    std::string line;
    while (std::getline(stream, line)) {
      Definition const definition = definitionOf(line);
      if (definition.name.empty() || definition.name.substr(0, 4) == "_APS") continue;
      u16string const name(definition.name.begin(), definition.name.end());
      unsigned int number = 0;
      if (!isNumber(definition.value, number)) {
        number = lookup(u16string(definition.value.begin(), definition.value.end()));
      }
      if (symbolToValue_.emplace(name, number).second) valueToSymbols_.emplace(number, name);
    }
  }
  unsigned int lookup(u16string const& name) const {
    auto const found = symbolToValue_.find(name);
    return found != symbolToValue_.end() ? found->second : kMissing;
  }
  std::set<u16string, IgnoringCase> namesOf(unsigned int number) const {
    std::set<u16string, IgnoringCase> names;
    auto const range = valueToSymbols_.equal_range(number);
    for (auto symbol = range.first; symbol != range.second; ++symbol) names.insert(symbol->second);
    return names;
  }

 private:
  std::map<u16string, unsigned int, IgnoringCase> symbolToValue_;
  std::multimap<unsigned int, u16string> valueToSymbols_;
};

// Of Qt's text, hash and hash with several values for a key.
template <class Text, class Numbers, class Names>
class QtTable {
 public:
  void parse(std::istream& stream) {
    std::string line;
    while (std::getline(stream, line)) {
      Definition const definition = definitionOf(line);
      if (definition.name.empty() || definition.name.substr(0, 4) == "_APS") continue;
      Text const name = textOf(definition.name);
      unsigned int number = 0;
      if (!isNumber(definition.value, number)) number = lookup(textOf(definition.value));
      Text const key = name.toLower();
      if (symbolToValue_.contains(key)) continue;
      symbolToValue_.insert(key, number);
      valueToSymbols_.insert(number, name);
    }
  }
  unsigned int lookup(Text const& name) const { return symbolToValue_.value(name.toLower(), kMissing); }
  std::set<u16string, IgnoringCase> namesOf(unsigned int number) const {
    std::set<u16string, IgnoringCase> names;
    auto const range = valueToSymbols_.equal_range(number);
    for (auto symbol = range.first; symbol != range.second; ++symbol) names.insert(symbol->toStdU16String());
    return names;
  }

 private:
  static Text textOf(std::string_view text) { return Text::fromLatin1(text.data(), static_cast<int>(text.size())); }

  Numbers symbolToValue_;
  Names valueToSymbols_;
};

// --- Texts ---------------------------------------------------------------------------------------------------------------

std::string narrowed(u16string const& text) {
  return std::string(text.begin(), text.end());
}

// Names as resource editors and their users make them: a prefix for the kind, one to three words, and a number where the
// words alone were not enough.
std::vector<std::string> sampleNames(int count) {
  static char const* const kPrefixes[] = {"IDC_", "IDC_", "IDC_STATIC_", "IDS_", "IDD_", "IDR_", "ID_"};
  std::mt19937 random(7);
  u16string const letters = sampleText(100000, 7);
  std::set<std::string> known;
  std::vector<std::string> names;
  while (static_cast<int>(names.size()) < count) {
    std::string name = kPrefixes[random() % 7];
    for (unsigned int words = 1 + random() % 3; words > 0; --words) {
      std::string word = narrowed(letters.substr(random() % (letters.size() - 10), 3 + random() % 7));
      std::transform(word.begin(), word.end(), word.begin(), [](char c) { return static_cast<char>(c - 32); });
      name += word + (words > 1 ? "_" : "");
    }
    if (random() % 3 == 0) name += std::to_string(1 + random() % 20);
    if (known.insert(name).second) names.push_back(name);
  }
  return names;
}

// A header with so many definitions; each number is given twice or so, and now and then a name refers to another one.
std::string sampleHeader(std::vector<std::string> const& names) {
  std::mt19937 random(8);
  std::string text = "//{{NO_DEPENDENCIES}}\r\n// Resources of the program\r\n//\r\n";
  unsigned int number = 100;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i % 20 == 0) text += "\r\n// Group\r\n";
    if (random() % 50 == 0) number = 100 + static_cast<unsigned int>(random() % 30000);
    number += static_cast<unsigned int>(random() % 2);
    bool const refers = i > 0 && random() % 50 == 0;
    text += "#define " + names[i] + std::string(names[i].size() < 32 ? 32 - names[i].size() : 1, ' ') +
            (refers ? names[random() % i] : std::to_string(number)) + "\r\n";
  }
  return text;
}

template <class Name>
std::vector<Name> allOf(std::vector<std::string> const& names) {
  std::vector<Name> all;
  for (std::string const& name : names) all.push_back(make<Name>(u16string(name.begin(), name.end())));
  return all;
}

// --- Rows ----------------------------------------------------------------------------------------------------------------

// One table of each kind answers the same questions in the same words.
template <class Table, class Name>
u16string answers(Table const& table, std::vector<Name> const& names) {
  u16string text;
  for (std::size_t i = 0; i < names.size(); i += 1 + names.size() / 100) {
    unsigned int const number = table.lookup(names[i]);
    text += plain(static_cast<long long>(number)) + KVW(':');
    for (auto const& name : table.namesOf(number)) text += plain(name) + KVW(' ');
  }
  return text;
}

struct KvTable {
  SymbolTable table;
  void parse(std::istream& stream) { table.parseHeaderFile(stream); }
  unsigned int lookup(String const& name) const { return table.lookupSymbol(name); }
  std::set<String, StringLess2> namesOf(unsigned int number) const { return table.lookupValue(number); }
};

// A parsed table with the names to ask it for.
template <class Table, class Name>
struct Parsed {
  Table table;
  std::vector<Name> const* names;
};
template <class Table, class Name>
u16string plain(Parsed<Table, Name> const& parsed) {
  return answers(parsed.table, *parsed.names);
}

template <class Table, class Name>
auto parsing(std::string const& text, std::vector<std::string> const& names) {
  return [text, all = std::make_shared<std::vector<Name>>(allOf<Name>(names))] {
    Parsed<Table, Name> parsed;
    parsed.names = all.get();
    std::istringstream stream(text);
    parsed.table.parse(stream);
    return parsed;
  };
}

void addParsing(std::string const& name, std::string const& text, std::vector<std::string> const& names) {
  Row(name)
      .add("KVBase", parsing<KvTable, String>(text, names))
      .add("std::map", parsing<PlainTable, u16string>(text, names))
      .add(PEER("QHash",
                parsing<QtTable<QString, QHash<QString, unsigned int>, QMultiHash<unsigned int, QString>>, QString>(
                    text, names)));
}

template <class Table, class Name>
auto lookingUp(std::string const& text, std::vector<std::string> const& names) {
  std::vector<std::string> shuffled = names;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(9));
  auto const parsed = std::make_shared<Parsed<Table, Name>>(parsing<Table, Name>(text, names)());
  return [parsed, all = allOf<Name>(shuffled), next = std::size_t(0)]() mutable {
    return static_cast<long long>(parsed->table.lookup(all[next++ % all.size()]));
  };
}

void addLookup(std::string const& name, std::string const& text, std::vector<std::string> const& names) {
  Row(name)
      .add("KVBase", lookingUp<KvTable, String>(text, names))
      .add("std::map", lookingUp<PlainTable, u16string>(text, names))
      .add(PEER("QHash",
                lookingUp<QtTable<QString, QHash<QString, unsigned int>, QMultiHash<unsigned int, QString>>, QString>(
                    text, names)));
}

// The text of the library's own header.
std::string stockHeader() {
  HINSTANCE const module = platform::modules().moduleOf(reinterpret_cast<void const*>(&BaseNode::Class));
  HRSRC const resource = platform::modules().findResource(module, KVW("RESOURCE.H"), KVW("METADATA"));
  require(resource != nullptr, "symbols: the library has its header");
  platform::ResourceBytes const bytes = platform::modules().resourceBytes(module, resource);
  return std::string(static_cast<char const*>(bytes.data), bytes.size);
}

std::vector<std::string> namesOf(std::string const& text) {
  std::vector<std::string> names;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    Definition const definition = definitionOf(line);
    if (!definition.name.empty()) names.emplace_back(definition.name);
  }
  return names;
}

}  // namespace

void addSymbols() {
  std::string const stock = stockHeader();
  std::vector<std::string> const stockNames = namesOf(stock);
  require(stockNames.size() == 65, "symbols: the header has 65 definitions");
  addParsing("symbols: parse the library's own header", stock, stockNames);
  for (int count : {1000, 10000, 100000}) {
    std::vector<std::string> const names = sampleNames(count);
    addParsing("symbols: parse " + std::to_string(count) + " definitions", sampleHeader(names), names);
  }
  addLookup("symbols: look up a name of 65", stock, stockNames);
  std::vector<std::string> const names = sampleNames(10000);
  addLookup("symbols: look up a name of 10000", sampleHeader(names), names);
}

}  // namespace bench
}  // namespace KV_1_1
