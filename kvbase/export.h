// SPDX-License-Identifier: MIT
//
// Macros for what compilers and object formats spell differently: exported names and a few attributes. No other file of
// the library asks for a compiler.
#pragma once

// KVBASE_EXPORTED and KVBASE_IMPORTED mark what a shared library exports, for the compilation of itself and of its users.
#if defined(_WIN32)
#define KVBASE_EXPORTED __declspec(dllexport)
#define KVBASE_IMPORTED __declspec(dllimport)
#else
#define KVBASE_EXPORTED __attribute__((visibility("default")))
#define KVBASE_IMPORTED __attribute__((visibility("default")))
#endif

// KVBASE_API marks what the shared library exports: class KVBASE_API Name.
//   KVBASE_STATIC   the user links the library statically, or tests link its objects
//   KVBASE_BUILD    the library itself is being compiled
#if defined(KVBASE_STATIC)
#define KVBASE_API
#elif defined(KVBASE_BUILD)
#define KVBASE_API KVBASE_EXPORTED
#else
#define KVBASE_API KVBASE_IMPORTED
#endif

// KVBASE_LOCAL marks what each library of the family has a copy of: it is never exported or imported.
#if defined(_WIN32)
#define KVBASE_LOCAL
#else
#define KVBASE_LOCAL __attribute__((visibility("hidden")))
#endif

// Lets a class with several empty bases take no room for them. Only one compiler needs to be told.
#if defined(_MSC_VER)
#define KVBASE_EMPTY_BASES __declspec(empty_bases)
#else
#define KVBASE_EMPTY_BASES
#endif

// For what must stay out of its callers: the rare part of a function whose common part is short, which would save registers
// for it, or a large buffer on the stack of a walk.
#if defined(_MSC_VER)
#define KVBASE_NEVER_INLINE __declspec(noinline)
#else
#define KVBASE_NEVER_INLINE __attribute__((noinline))
#endif

// For a function that reads whole aligned vectors and so may read behind the end of a text, but not beyond its page.
#if defined(__GNUC__)
#define KVBASE_READS_ALIGNED_BLOCKS __attribute__((no_sanitize("address"), no_sanitize("thread")))
#else
#define KVBASE_READS_ALIGNED_BLOCKS
#endif

// Enclose a use of a standard name that C++17 deprecates but the interface requires.
#if defined(_MSC_VER)
#define KVBASE_DEPRECATED_NAMES_BEGIN __pragma(warning(push)) __pragma(warning(disable : 4996))
#define KVBASE_DEPRECATED_NAMES_END __pragma(warning(pop))
#else
#define KVBASE_DEPRECATED_NAMES_BEGIN \
  _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wdeprecated-declarations\"")
#define KVBASE_DEPRECATED_NAMES_END _Pragma("GCC diagnostic pop")
#endif
