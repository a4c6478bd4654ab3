// SPDX-License-Identifier: MIT
//
// What a program sees of a module of the family: one line for each fact, "text 100: Hello". A test starts its own program
// again to see it, under another name or with other arguments. Of the same module and translation, the report is the same
// on every system.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "kvbase/modules/module.h"

namespace KV_1_1 {
namespace testing {

// The languages in use; the name, language, texts, symbols and resources of a module that has been started; the version
// data of a file.
std::string reportOfProcess();
std::string reportOfModule(Module const& module);
std::string reportOfVersion(std::string const& file);

// The text 100 of the translation for a language of the caller's choice; "the module" or "none" without one.
std::string greetingOfTranslation(HINSTANCE module, unsigned short language);

// What the program does if its arguments are
//   --report FILE MODULE [-version=FILE] [-controls] [-language=1031]... [-lang=xxx]...
// It starts the module, or for "-" the program itself, and writes the reports to the file. For each -language it asks for the
// translation in that language first. `arguments` stand behind "--report". Returns the exit status.
int writeReport(std::vector<std::string> const& arguments);

// The report of a copy of this program, by the arguments from MODULE on.
std::string textOfReport(std::filesystem::path const& program, std::vector<std::string> const& arguments);

// The same, by what stands before the first colon of each line.
using Facts = std::map<std::string, std::string>;
Facts factsOfReport(std::filesystem::path const& program, std::vector<std::string> const& arguments);

}  // namespace testing
}  // namespace KV_1_1
