// SPDX-License-Identifier: MIT
//
// Every class, function and datum of the interface is exported, and nothing else is. The names are those of the checked-in
// list of this system; ./kv check compares the list with the library.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <type_traits>
#include <vector>

#include "kvbase/kvbase.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Names = std::vector<std::string>;

// Without the namespace of the library, and with the type that one system writes differently.
Names exportedNames() {
  Names names;
  std::ifstream file(KVBASE_EXPORTED_NAMES);
  for (std::string line; std::getline(file, line);) {
    for (std::string const& cut : {std::string("KV_1_1::"), std::string("\r")}) {
      for (std::size_t at; (at = line.find(cut)) != std::string::npos;) line.erase(at, cut.size());
    }
    names.push_back(line);
  }
  return names;
}

// The class, function or datum that a line is about: what stands in front of its parameters, members cut to their class.
bool isAbout(std::string const& line, std::string const& entry) {
  std::size_t start = 0;
  for (char const* const prefix : {"typeinfo name for ", "typeinfo for ", "vtable for "}) {
    if (line.compare(0, std::char_traits<char>::length(prefix), prefix) == 0) {
      start = std::char_traits<char>::length(prefix);
    }
  }
  if (line.compare(start, entry.size(), entry) != 0) return false;
  char const next = line.size() == start + entry.size() ? '\0' : line[start + entry.size()];
  return next == '\0' || next == ':' || next == '(' || next == '[';
}

// --- The table ---

// Classes with members that are exported.
Names const kClasses = {"BaseNode",
                        "mZClass",
                        "StringVal",
                        "String",
                        "StringBuffer",
                        "StringResource",
                        "FileSystemItem",
                        "Directory",
                        "File",
                        "FileSystemIterator",
                        "DirectoryIterator",
                        "FileIterator",
                        "FileCollectionIterator",
                        "Module",
                        "ScopedResourceDomain",
                        "SymbolTable",
                        "StackWalker",
                        "VgStackWalker",
                        "OutputDebugParenthesesScope",
                        "ObserverInfo",
                        "InfoStringMap"};

// The functions that are no members; scanpt_cast has its own test.
Names const kFunctions = {"__assert_fail_x",
                          "__get_assertion_failure_handler",
                          "__set_assertion_failure_handler",
                          "GetCurrentLangId",
                          "GetUsedLangAbbrevs",
                          "LoadTranslationDLL",
                          "LocateHelpFile",
                          "getWindowsError"};

Names const kData = {"String::NIL",
                     "String::EMPTY",
                     "String::outOfRange",
                     "mZClass::rootClass",
                     "Module::head",
                     "Module::tail",
                     "Module::count",
                     "SymbolTable::EMPTY",
                     "VgStackWalker::globalStackWalker",
                     "VgStackWalker::callStackDepthOfPreviousOutput",
                     "VgStackWalker::initialCallStackDepth",
                     "ScanPtColor<Vec3d<float> >::nullReference",
                     "ScanPtColor<Vec3d<double> >::nullReference",
                     "ScanPtColor<double>::nullReference",
                     "ScanPtColor<int>::nullReference",
                     "KVBoundingBoxTraits<float>::epsilon",
                     "KVBoundingBoxTraits<float>::sqrt",
                     "KVBoundingBoxTraits<float>::maxVector",
                     "KVBoundingBoxTraits<double>::epsilon",
                     "KVBoundingBoxTraits<double>::sqrt",
                     "KVBoundingBoxTraits<double>::maxVector"};

// Private members that modules of the family reach.
Names const kPrivateMembers = {"Module::Module()",
                               "Module::~Module()",
                               "Module::internalInit(HINSTANCE__*)",
                               "Module::internalTerm()",
                               "SymbolTable::parseLineHeaderFile(String const&)",
                               "Directory::normalize()",
                               "Directory::getDriveLetter() const",
                               "BaseNode::validityCheck(unsigned int) const",
                               "StringVal::validityCheck(unsigned int) const"};

// What the interface needs beside the table: the parts of client_module.h that are in the library, the order of names that
// the containers of the interface have, the operators of String, and the casts of scan points.
Names const kNeeded = {"ModuleEntry", "ProgramStart", "StringLess2"};

bool isCastOfScanPoints(std::string const& line) {
  return line.find(" scanpt_cast<") != std::string::npos;
}
bool isOperatorOfString(std::string const& line) {
  return line.compare(0, 8, "operator") == 0 && line.find("String") != std::string::npos;
}
// The searches of a Directory, which a template of its class declares.
bool isSearch(std::string const& line) {
  return line.find(" Directory::find<") != std::string::npos;
}
// Of a template member the result stands in front.
bool isMemberOf(std::string const& line, char const* owner) {
  return line.compare(0, 5, "void ") == 0 && line.find(std::string(" ") + owner + "::") != std::string::npos;
}

// Everything in these is inline, so users of the library need nothing of it. A class with virtual operations is for users to
// derive from.
static_assert(std::is_default_constructible<InterlockedCounter>::value, "complete without the library");
static_assert(std::is_trivially_copyable<CodePageInterface>::value, "complete without the library");
static_assert(std::is_base_of<CodePageInterface, UTF8Interface>::value, "complete without the library");
static_assert(std::is_abstract<KVFileProgressInterface>::value, "for users to derive from");
Names const kInline = {"InterlockedCounter", "CodePageInterface", "UTF8Interface", "KVFileProgressInterface"};

TEST(ExportedNames, HaveEveryClassOfTheInterface) {
  Names const names = exportedNames();
  ASSERT_FALSE(names.empty());
  for (std::string const& entry : kClasses) {
    EXPECT_TRUE(std::any_of(names.begin(), names.end(), [&](auto const& line) { return isAbout(line, entry); }))
        << entry;
  }
}

TEST(ExportedNames, HaveEveryFunctionOfTheInterface) {
  Names const names = exportedNames();
  for (std::string const& entry : kFunctions) {
    EXPECT_TRUE(std::any_of(names.begin(), names.end(), [&](auto const& line) { return isAbout(line, entry); }))
        << entry;
  }
  // From float and double to float and double, of points with colour alone and with more.
  EXPECT_EQ(std::count_if(names.begin(), names.end(), isCastOfScanPoints), 8);
}

TEST(ExportedNames, HaveEveryDatumAndThePrivateMembersThatModulesReach) {
  Names const names = exportedNames();
  for (Names const* table : {&kData, &kPrivateMembers}) {
    for (std::string const& entry : *table) EXPECT_EQ(std::count(names.begin(), names.end(), entry), 1) << entry;
  }
  for (char const* const entry :
       {"Module::findResourceImpl(", "Module::getResourceImpl(", "Module::loadResourceImpl(",
        "Directory::collectContentsInternal(", "Directory::collectDirectoriesInternal(",
        "Directory::collectFilesInternal(", "Directory::fromStringLocal(", "Directory::fromStringUNC("}) {
    auto const isOverload = [&](std::string const& line) {
      return line.compare(0, std::string(entry).size(), entry) == 0;
    };
    EXPECT_TRUE(std::any_of(names.begin(), names.end(), isOverload)) << entry;
  }
}

TEST(ExportedNames, HaveTheRegistrationOfEveryClassBelowBaseNode) {
  Names const names = exportedNames();
  Names const classes = {"FileSystemItem",         "Directory",         "File",
                         "FileSystemIterator",     "DirectoryIterator", "FileIterator",
                         "FileCollectionIterator", "ObserverInfo",      "InfoStringMap"};
  for (std::string const& name : classes) {
    for (char const* const member : {"::Class()", "::getClassType() const", "::initStatics()", "::clearStatics()",
                                     "::ClassCreator::~ClassCreator()"}) {
      EXPECT_EQ(std::count(names.begin(), names.end(), name + member), 1) << name << member;
    }
  }
  for (char const* const name : {"BaseNode::Class()", "BaseNode::getClassType() const"}) {
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
  }
}

TEST(ExportedNames, HaveNothingElse) {
  Names allowed = kData;
  for (Names const* table : {&kClasses, &kFunctions, &kNeeded})
    allowed.insert(allowed.end(), table->begin(), table->end());
  for (std::string const& line : exportedNames()) {
    bool const isNamed =
        std::any_of(allowed.begin(), allowed.end(), [&](auto const& entry) { return isAbout(line, entry); });
    EXPECT_TRUE(isNamed || isCastOfScanPoints(line) || isOperatorOfString(line) || isSearch(line) ||
                isMemberOf(line, "InfoStringMap"))
        << line;
  }
}

TEST(ExportedNames, HaveNothingOfWhatIsInline) {
  for (std::string const& line : exportedNames()) {
    for (std::string const& entry : kInline) EXPECT_FALSE(isAbout(line, entry)) << line;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
