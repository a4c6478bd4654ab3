// SPDX-License-Identifier: MIT
//
// A program that is not linked with KVBase and loads and uses libraries as its arguments say:
//
//   load=STEM            loads a library in the program's folder
//   STEM.FUNCTION        calls a function of a library that it has loaded
//   unload=STEM          unloads it
//   loaded=STEM          tells whether it is loaded
//   exit                 ends the program by exit, from within a function
//
// It writes what it does and what comes of it to the standard output.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "tests/shared/loader.h"

namespace {

std::map<std::string, void*> libraries;

void tell(std::string const& event) {
  std::fputs((event + "\n").c_str(), stdout);
  std::fflush(stdout);
}

struct Farewell {
  ~Farewell() { tell("static object of the program goes"); }
};

void load(std::string const& stem) {
  void* const library = loadLibrary(stem);
  if (library != nullptr) libraries[stem] = library;
  tell("load " + stem + (library != nullptr ? "" : " failed"));
}

void unload(std::string const& stem) {
  tell("unload " + stem);
  if (!unloadLibrary(libraries[stem])) tell("failed");
  libraries.erase(stem);
}

void call(std::string const& stem, std::string const& name) {
  auto const function = libraries.count(stem) != 0 ? functionOf(libraries[stem], name.c_str()) : nullptr;
  if (function == nullptr) return tell("no function " + name);
  function();
}

void obey(std::string const& word) {
  std::size_t const at = word.find_first_of("=.");
  std::string const first = word.substr(0, at);
  std::string const second = at != std::string::npos ? word.substr(at + 1) : std::string();
  if (word == "exit") std::exit(0);
  if (first == "load") return load(second);
  if (first == "unload") return unload(second);
  if (first == "loaded") return tell(second + (isLibraryLoaded(second) ? " is loaded" : " is not loaded"));
  call(first, second);
}

}  // namespace

int main(int count, char** arguments) {
  static Farewell const farewell;
  for (int i = 1; i < count; ++i) {
    // The language of the modules is theirs to read.
    if (arguments[i][0] != '-') obey(arguments[i]);
  }
  tell("main returns");
  return 0;
}
