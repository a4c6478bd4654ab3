// SPDX-License-Identifier: MIT
#include "tests/shared/modules/module_report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>

#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/controls_language.h"
#include "tests/shared/modules/run_program.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thread_locale.h"

namespace KV_1_1 {
namespace testing {

namespace {

using platform::modules;
using platform::resourceId;

std::string hexadecimal(void const* data, std::size_t size) {
  static char const digits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    unsigned const byte = static_cast<unsigned char const*>(data)[i];
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

// The texts around those of the fixtures, those on either side of a block of 16, and the last.
void reportTexts(std::ostream& out, Module const& module) {
  struct Range {
    unsigned int first;
    unsigned int last;
  };
  for (Range const range :
       {Range{0, 1}, Range{95, 112}, Range{199, 201}, Range{299, 301}, Range{4094, 4096}, Range{65534, 65535}}) {
    for (unsigned int id = range.first; id <= range.last; ++id) {
      String const text = String::loadFromResource(id, module);
      if (text == KVW("Error loading string resource!")) continue;
      out << "text " << id << ": " << narrow(text) << '\n';
    }
  }
}

void reportSymbols(std::ostream& out, Module const& module) {
  for (unsigned int value = 0; value < 1000; ++value) {
    for (String const& name : module.getResourceSymbols().lookupValue(value)) {
      out << "symbol " << narrow(name) << ": " << value << '\n';
    }
  }
}

void reportResources(std::ostream& out, Module const& module) {
  struct Resource {
    char const* label;
    wchar const* name;
    wchar const* type;
  };
  wchar const* const metadata = KVW("metadata");
  for (Resource const& resource : {
           Resource{"BOTH", KVW("both"), metadata},
           Resource{"ONLYTRANSLATION", KVW("OnlyTranslation"), metadata},
           Resource{"ONLYMODULE", KVW("OnlyModule"), metadata},
           Resource{"EMPTY", KVW("empty"), metadata},
           Resource{"#18 of 300", KVW("#18"), resourceId(300)},
           Resource{"#17", KVW("#17"), metadata},
       }) {
    for (ulong32 const wanted : {1031u, 1036u, 3084u}) {
      ulong32 locale = wanted;
      auto const bytes = module.getResource(String(resource.name), resource.type, /*localized=*/true, &locale);
      out << "resource " << resource.label << " for " << wanted << ": ";
      if (bytes.first == nullptr) {
        out << "none\n";
      } else {
        out << hexadecimal(bytes.first, bytes.second) << " of " << locale << '\n';
      }
    }
  }
}

bool startsWith(std::string const& text, std::string const& start) {
  return text.compare(0, start.size(), start) == 0;
}

// The reports of a module in the order in which the arguments ask for them.
std::string reportOf(Module const& module, HINSTANCE instance, std::vector<std::string> const& arguments) {
  std::string report;
  for (std::string const& argument : arguments) {
    if (!startsWith(argument, "-language=")) continue;
    std::string const language = argument.substr(10);
    std::string const greeting = greetingOfTranslation(instance, static_cast<unsigned short>(std::stoi(language)));
    report += "translation for " + language + ": " + greeting + '\n';
  }
  return report + reportOfModule(module);
}

}  // namespace

std::string greetingOfTranslation(HINSTANCE module, unsigned short language) {
  HINSTANCE const translation = LoadTranslationDLL(module, language);
  if (translation == nullptr) return "none";
  if (translation == module) return "the module";
  wstring text;
  bool const hasText = modules().stringTableEntry(translation, 100, text);
  EXPECT_TRUE(modules().freeLibrary(translation));
  return hasText ? narrow(text) : "no text";
}

std::string reportOfModule(Module const& module) {
  std::ostringstream out;
  out << "name: " << narrow(module.getModuleName()) << '\n';
  out << "language: " << GetCurrentLangId(module) << '\n';
  reportTexts(out, module);
  reportSymbols(out, module);
  reportResources(out, module);
  return out.str();
}

std::string reportOfProcess() {
  std::ostringstream out;
  out << "used languages:";
  for (wstring const& abbreviation : GetUsedLangAbbrevs()) out << ' ' << narrow(abbreviation);
  out << '\n';
  return out.str();
}

std::string reportOfVersion(std::string const& file) {
  std::u16string const units = std::filesystem::u8path(file).u16string();
  wstring path(units.begin(), units.end());
  std::replace(path.begin(), path.end(), KVW('/'), KVW('\\'));
  ulong32 handle = 0;
  std::vector<char> block(modules().versionInfoSize(path.c_str(), handle));
  if (block.empty() || !modules().versionInfo(path.c_str(), handle, static_cast<ulong32>(block.size()), &block[0])) {
    return "version: none\n";
  }
  std::ostringstream out;
  void const* value = nullptr;
  ulong32 length = 0;
  if (modules().queryVersion(&block[0], KVW("\\"), value, length)) {
    out << "version: " << hexadecimal(value, length) << '\n';
  }
  if (modules().queryVersion(&block[0], KVW("\\VarFileInfo\\Translation"), value, length)) {
    out << "languages of the version: " << hexadecimal(value, length) << '\n';
  }
  for (char const* key : {"CompanyName", "FileDescription", "ProductVersion"}) {
    wstring const query = KVW("\\StringFileInfo\\040704b0\\") + widen(key);
    if (!modules().queryVersion(&block[0], query.c_str(), value, length)) continue;
    wstring text(length, KVW('\0'));
    std::memcpy(&text[0], value, length * sizeof(wchar));
    out << key << ": " << narrow(wstring(text.c_str())) << '\n';
  }
  return out.str();
}

int writeReport(std::vector<std::string> const& arguments) {
  if (arguments.size() < 2) return 2;
  std::string const& module = arguments[1];
  // The system's own choice among languages depends on it.
  ThreadLocale const english(1033);
  std::string report = reportOfProcess();
  if (module == "-") {
    ModuleOwner owner;
    if (!owner.start(modules().program())) return 3;
    report += reportOf(owner.module(), modules().program(), arguments);
    owner.end();
  } else {
    StartedModule started(std::filesystem::u8path(module));
    report += reportOf(started.module(), started.instance(), arguments);
  }
  for (std::string const& argument : arguments) {
    if (argument == "-controls") report += "controls: " + controlsLanguage() + '\n';
    if (startsWith(argument, "-version=")) report += reportOfVersion(argument.substr(9));
  }
  std::ofstream file(std::filesystem::u8path(arguments[0]), std::ios::binary);
  file << report;
  file.close();
  return file ? 0 : 4;
}

std::string textOfReport(std::filesystem::path const& program, std::vector<std::string> const& arguments) {
  TempFolder folder;
  std::vector<std::string> all = {"--report", folder.path("report").u8string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  EXPECT_EQ(runProgram(program, all), 0) << program;
  std::ifstream file(folder.path("report"), std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

Facts factsOfReport(std::filesystem::path const& program, std::vector<std::string> const& arguments) {
  std::istringstream text(textOfReport(program, arguments));
  Facts facts;
  for (std::string line; std::getline(text, line);) {
    std::size_t const colon = line.find(':');
    facts[line.substr(0, colon)] = line.substr(std::min(colon + 2, line.size()));
  }
  return facts;
}

}  // namespace testing
}  // namespace KV_1_1
