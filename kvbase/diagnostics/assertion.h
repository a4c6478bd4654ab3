// SPDX-License-Identifier: MIT
//
// The one path on which all modules of the family report failed assertions: an entry point, and behind it a handler that
// a program can replace.
//
//   if (!(count > 0)) __assert_fail_x("count > 0", nullptr, __FILE__, __LINE__, __func__);
//
//   AssertionFailureHandler const previous = __get_assertion_failure_handler();
//   __set_assertion_failure_handler(&writeToTestLog);   // which may call `previous`
//
// Texts are narrow, in the ANSI code page of the process. They are only read during the call.
#pragma once

#include "kvbase/export.h"

// Reports one failure.
//   expression   the text of the failed expression; may be null
//   comment      a remark of the assertion's author; null if there is none
//   file         the name of the source file; may be null
//   line         the line in it
//   function     the name of the enclosing function; may be null
// A handler that returns lets the program go on behind the assertion. It is not expected to throw: an exception goes
// through to who called __assert_fail_x, and reporting is then over, as told there.
using AssertionFailureHandler = void (*)(char const* expression, char const* comment, char const* file,
                                         unsigned int line, char const* function);

// Calls the current handler, if there is one, and returns when it returns.
//
// While a failure is being reported, no other is: a call from within the handler, or on another thread meanwhile, returns
// at once and its failure is lost. Thread rule: any thread.
// COMPAT: an exception that leaves the handler (std::bad_alloc of the default one) keeps the count of failures in flight
// raised, so every later failure of the process is lost.
// REQUIRES: the library has not ended; the default handler uses a table that goes with it.
KVBASE_API void __assert_fail_x(char const* expression, char const* comment, char const* file, unsigned int line,
                                char const* function);

// The current handler; null if all reports are silenced. From the start of the library it is the default handler, which
//
// 1. returns if the user has chosen to ignore the file and line, of whichever expression, before. Files that are null,
//    or cannot be converted, count as one;
// 2. writes a message to the debug channel (platform::DebugApi::output). Null arguments add nothing to it:
//      Assertion 1 < 0 failed.
//      In file scan.cpp:7 in function readHeader.
//      "a comment, in a line of its own; left out, with the line feed before it, if it is null"
// 3. writes the message to the standard error stream, whatever becomes of that, without a line feed behind it.
//    COMPAT: as the format of a print that has no arguments. "%%" is written as "%". A directive is left out, and takes
//    nothing from anywhere. A percent sign that begins neither is written as it stands, and the text behind it is read on.
//    A directive is: % [-+ #0]* [digits | *] [.[digits | *]] [hh h ll l j z t L w I64 I32 I] one of diouxXcCsSpnaAeEfFgGZ
//      "n % 2 == 0" => "n % 2 == 0"      "n %d" => "n "      "100% done" => "100one"      "50%" => "50%"
// 4. asks the user (platform::DebugApi::ask), with "scan.cpp:7" for the title, and acts on the answer:
//      abort            raises SIGABRT; if that comes back, ends the process with status 3, and no end code is run
//      retry            stops in the debugger, then returns: the check is not run again
//      ignore           returns, and remembers the file and line for the rest of the run
//      anything else    returns
//
// The default handler throws std::bad_alloc without memory; what was written until then stays written.
KVBASE_API AssertionFailureHandler __get_assertion_failure_handler();

// Replaces the handler; null silences all reports. To undo it, store what __get_assertion_failure_handler returned
// before. A report that is under way goes on with the old handler. Thread rule (both): any thread.
KVBASE_API void __set_assertion_failure_handler(AssertionFailureHandler handler);
