// NorvikCore/platform/export.h - marks the names that the shared library exports; all others are hidden. Rejects
// compiler options that the library cannot be used with.
#pragma once

#define NK_EXPORT __attribute__((visibility("default")))

// Marks a name of an internal header that tests use. Only a build with tests exports it. A name of an internal header
// that the library's components use is marked with NK_EXPORT.
#ifdef NORVIK_EXPORT_INTERNALS
#define NK_EXPORT_FOR_TESTS NK_EXPORT
#else
#define NK_EXPORT_FOR_TESTS
#endif

// Calls of the function do not use the procedure linkage table of the calling file. The page of that table is seldom in
// the caches of a thread that calls few functions.
#if defined(__GNUC__) && !defined(__clang__)
#define NK_NO_PLT [[gnu::noplt]]
#else
#define NK_NO_PLT
#endif

// Every public header that needs C++20 includes this one first, directly or through another header. The #include of a
// missing file ends the compilation, so that the sentence before it is the only error.
#if __cplusplus < 202002L
#error NorvikCore needs C++20 or later: compile with -std=c++20
#include "C++20"
#endif

// The library reports errors by exceptions.
#ifndef __cpp_exceptions
#error NorvikCore reports errors by exceptions: compile without -fno-exceptions
#include "exceptions"
#endif

// Classes of the library have containers of the standard library as members, and functions take them as arguments. The
// debug mode of libstdc++ changes their layout. A build of this library in that mode defines NORVIK_GLIBCXX_DEBUG for
// its users.
#if defined(_GLIBCXX_DEBUG) != defined(NORVIK_GLIBCXX_DEBUG)
#error NorvikCore and the program must agree on _GLIBCXX_DEBUG: use _GLIBCXX_ASSERTIONS, or build NorvikCore with _GLIBCXX_DEBUG too
#include "_GLIBCXX_DEBUG"
#endif
