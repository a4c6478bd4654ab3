// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <map>
#include <set>

#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/strings/string_less.h"

namespace KV_1_1 {

// The names of a module's resources: what the C header says with which the resources were built. Several names may have
// one number.
//
//   SymbolTable symbols;
//   std::ifstream header("resource.h");
//   if (symbols.parseHeaderFile(header)) show(symbols[KVW("IDC_LENGTH")], symbols[4112]);
//
// Names compare by StringLess2, so without regard to case.
// Lifetime: a table owns its names. A moved-from table is empty and usable.
// Thread rule: any number of threads may read a table. Filling it and assigning to it is for one thread, while no other
// one uses it.
class KVBASE_API SymbolTable {
 public:
  // The table of a module that has none; empty.
  static SymbolTable const EMPTY;

  // Empty.
  SymbolTable();
  SymbolTable(SymbolTable const& other);
  // Takes the contents over; `other` becomes empty.
  SymbolTable(SymbolTable&& other) noexcept;
  ~SymbolTable();
  // Both leave a table as it is that is assigned to itself.
  // Failure (copy): std::bad_alloc; the table then keeps its contents.
  SymbolTable& operator=(SymbolTable const& other);
  SymbolTable& operator=(SymbolTable&& other) noexcept;

  // The number of a name; 0xFFFFFFFF if the table does not have it, and for NIL.
  // COMPAT: a name whose number is 0xFFFFFFFF looks as if it were not there.
  unsigned int lookupSymbol(String const& name) const;
  unsigned int operator[](String const& name) const { return lookupSymbol(name); }

  // All names with that number in the order of StringLess2; an empty set if there is none.
  // Failure: std::bad_alloc.
  std::set<String, StringLess2> lookupValue(unsigned int value) const;
  std::set<String, StringLess2> operator[](unsigned int value) const { return lookupValue(value); }

  // Adds the definitions of a text in the ANSI code page, up to the end of the stream; what the table has already stays
  // and can be referred to. False if a line was faulty, or if the stream was or became bad. A faulty line does not end
  // the reading: the definitions before and behind it are in the table. A stream at its end gives true.
  //
  //   #define NAME 123 // remark   NAME is 123; whatever stands behind the number is ignored
  //   #define NAME OTHER           NAME has the number of OTHER, which is defined above; otherwise the line is faulty
  //   #define NAME                 NAME is 0
  //   #define _APS_NAME 5          ignored, as is each line without "#define"
  //   #define                      faulty, as is #defineNAME 1
  //   a name that is known         faulty, whatever its case; the first definition stays
  //
  // Words are separated by any units that are not graphic (String::findWS), so it does not matter how lines end.
  //
  // A line of 255 bytes or more, its line feed not counted, is faulty and ends the reading: nothing of it is added, the
  // result is false, and the stream has failed. So does a stream that had failed before the call.
  //
  // COMPAT: numbers are read by String::operator>>(unsigned int&), from the first letter, digit, sign or full stop on.
  // 0x10 is 0, 10L is 10, -1 is 4294967295, (FOO-1) is 0 and so is a value without letter, digit, sign or full stop.
  // COMPAT: "#define" counts wherever it stands, in comments too. A macro with arguments is a name with its brackets.
  // COMPAT: the value of a name at the very end of a line is the first word of the line. That is 0 where it is "#define",
  // but "x #define NAME" gives NAME the number of x. If only blanks stand behind the name, the value is the whole line.
  // COMPAT: a name whose number is 0xFFFFFFFF cannot be referred to.
  //
  // Failure: what the stream has been told to throw; the definitions up to then are in the table. std::bad_alloc; the
  // table then has the definitions up to some line, or none of them.
  bool parseHeaderFile(std::basic_istream<char>& stream);

 private:
  // Takes one line of such a text; false if it is faulty.
  bool parseLineHeaderFile(String const& line);
  // Not exported.
  struct Contents;

  std::map<String, unsigned int, StringLess2> symbolToValue;
  // Names of one number stand in the order of their definition.
  std::multimap<unsigned int, String> valueToSymbols;
};

}  // namespace KV_1_1
