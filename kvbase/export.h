// SPDX-License-Identifier: MIT
//
// What compilers and object formats spell differently: exporting a name, and the few attributes the library uses.
// Nothing else in the library names a compiler.
#pragma once

// KVBASE_API marks what the shared library exports. It stands between `class` and the name.
//   KVBASE_STATIC   the user links the library statically, or tests link its objects
//   KVBASE_BUILD    the library itself is being compiled
#if defined(KVBASE_STATIC)
#define KVBASE_API
#elif defined(_WIN32)
#if defined(KVBASE_BUILD)
#define KVBASE_API __declspec(dllexport)
#else
#define KVBASE_API __declspec(dllimport)
#endif
#else
#define KVBASE_API __attribute__((visibility("default")))
#endif

// KVBASE_LOCAL marks what each library of the family has of its own: it is never exported, nor taken from another library.
#if defined(_WIN32)
#define KVBASE_LOCAL
#else
#define KVBASE_LOCAL __attribute__((visibility("hidden")))
#endif

// Lets a class with several empty bases take no room for them, as every compiler but one does by itself.
#if defined(_MSC_VER)
#define KVBASE_EMPTY_BASES __declspec(empty_bases)
#else
#define KVBASE_EMPTY_BASES
#endif

// For a function that reads whole aligned vectors and so may look past a text's end, but never past its page.
#if defined(__GNUC__)
#define KVBASE_READS_ALIGNED_BLOCKS __attribute__((no_sanitize("address"), no_sanitize("thread")))
#else
#define KVBASE_READS_ALIGNED_BLOCKS
#endif

// Brackets a line that uses a standard name deprecated in C++17 which is part of the interface all the same.
#if defined(_MSC_VER)
#define KVBASE_DEPRECATED_NAMES_BEGIN __pragma(warning(push)) __pragma(warning(disable : 4996))
#define KVBASE_DEPRECATED_NAMES_END __pragma(warning(pop))
#else
#define KVBASE_DEPRECATED_NAMES_BEGIN \
  _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wdeprecated-declarations\"")
#define KVBASE_DEPRECATED_NAMES_END _Pragma("GCC diagnostic pop")
#endif
