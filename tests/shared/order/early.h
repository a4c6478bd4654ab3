// SPDX-License-Identifier: MIT
//
// The first static object of order_host: built before those of the library, destroyed behind them.
#pragma once

namespace order {

// Writes one event with the state of the library's globals at this moment:
//   EMPTY      a text beside that of the program shares the empty payload
//   modules    the number of modules in the list
//   records    the number of class records
//   table      whether the table of inverse lengths is built
//   walker     whether the global walker is built and not yet destroyed
//   symbols    whether the empty symbol table is
void tell(char const* event);

// To be called when the global walker is destroyed.
void tellWalkerGoes();

// From here on the destruction of each object in the at-exit list is told, and that of the empty symbol table and of the
// empty text can be seen.
void watchDestruction();

}  // namespace order
