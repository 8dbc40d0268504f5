// NorvikCore/linq/LINQ.h - queries over arrays and dictionaries: all of them, and chains.
//
//   Value net = payslips | linq_where([](const Payslip& p) { return p.isPaid(); })
//                        | linq_select(&Payslip::netPay)
//                        | linq_sum();
//   Ref<NSMutableArray> unpaid = linq_where(*payslips, [](const Payslip& p) { return !p.isPaid(); });
//
// A query is a free function whose first parameter is the receiver, which it never changes. Without the receiver it is
// a step of a chain: Chain.h.
//
// Results are new collections, mutable where their type says so, unless the header says that the receiver itself is
// returned. A result never holds an absent value: the null marker stands for it. Dictionaries keep the order in which
// their entries were first put in, and so do all results.
//
// A closure is any callable; it is called once for each element, in order, and not kept. It takes an element as a
// `const Value&` or as what it is, `[](const Payslip& p)`, `[](Decimal amount)`, `&Payslip::netPay`; an element that is
// something else raises NSInvalidArgumentException. Where a closure may be absent, it may be nullptr, an empty Block or
// an empty std::function. A closure that changes the receiver raises NSGenericException when it returns; the reference
// to the element that it was given is not valid any more. Exceptions of a closure pass.
//
// Equality is that of Value: one across all numbers, so that 5, 5.0 and 5.00 are one key and one element.
//
// Every query takes time in proportion to the number of elements, a sort n log n. Threads: those of the collections.
#pragma once

#include "NorvikCore/linq/Chain.h"
#include "NorvikCore/linq/LINQQueries.h"
