// NorvikCore/platform/export.h - marks what the shared library offers; everything else is hidden.
#pragma once

#define NK_EXPORT __attribute__((visibility("default")))

// Marks what internal headers offer to the tests. Only a build with tests exports it; in the shipped library it is
// hidden. What they offer to the library's components is marked with NK_EXPORT.
#ifdef NORVIK_EXPORT_INTERNALS
#define NK_EXPORT_FOR_TESTS NK_EXPORT
#else
#define NK_EXPORT_FOR_TESTS
#endif

// Calls of the function go straight to it, and not by the table of a program's calls to other files: that is a page of
// its own, which is seldom in the caches where little is called.
#if defined(__GNUC__) && !defined(__clang__)
#define NK_NO_PLT [[gnu::noplt]]
#else
#define NK_NO_PLT
#endif

// Every public header that needs C++20 begins with this one, itself or by what it includes. The missing file ends the
// compilation at the sentence, before C++20 is read as something older.
#if __cplusplus < 202002L
#error NorvikCore needs C++20 or later: compile with -std=c++20
#include "C++20"
#endif

// Errors are reported by exceptions, which destroy what lies between them and their handler.
#ifndef __cpp_exceptions
#error NorvikCore reports errors by exceptions: compile without -fno-exceptions
#include "exceptions"
#endif

// Containers of the standard library are members of classes and arguments of functions here, and the debug mode changes
// their layout. A build of this library in that mode defines NORVIK_GLIBCXX_DEBUG for its users.
#if defined(_GLIBCXX_DEBUG) != defined(NORVIK_GLIBCXX_DEBUG)
#error NorvikCore and the program must agree on _GLIBCXX_DEBUG: use _GLIBCXX_ASSERTIONS, or build NorvikCore with _GLIBCXX_DEBUG too
#include "_GLIBCXX_DEBUG"
#endif
