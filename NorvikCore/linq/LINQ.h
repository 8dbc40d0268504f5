// NorvikCore/linq/LINQ.h - all queries over arrays and dictionaries, and chains of queries.
//
//   Value net = payslips | linq_where([](const Payslip& p) { return p.isPaid(); })
//                        | linq_select(&Payslip::netPay)
//                        | linq_sum();
//   Ref<NSMutableArray> unpaid = linq_where(*payslips, [](const Payslip& p) { return !p.isPaid(); });
//
// A query is a free function whose first parameter is the receiver. A query never changes its receiver. Without the
// receiver it is a step of a chain (see Chain.h).
//
// A result is a new collection unless the header says that the receiver itself is returned. It is mutable if its type
// is a mutable one. A result never holds an absent value: the null marker takes its place. Dictionaries keep their
// entries in the order of first insertion, and results keep the order of their elements or entries.
//
// A closure is any callable. A query calls it once for each element, in order, and does not keep it. The closure takes
// an element as a `const Value&` or as the type that the element holds: `[](const Payslip& p)`, `[](Decimal amount)`,
// `&Payslip::netPay`. An element of another type raises NSInvalidArgumentException. If a closure may be absent, pass
// nullptr, an empty Block or an empty std::function. If a closure changes the receiver, the query raises
// NSGenericException when the closure returns, and the closure's reference to the element is no longer valid after the
// change. Exceptions of a closure reach the caller.
//
// Elements and keys are equal as Values are. Numbers of all types compare by value: 5, 5.0 and 5.00 are one key and one
// element.
//
// A query takes time in proportion to the number of elements; a sort takes n log n. Threads: the rules of the
// collections apply.
#pragma once

#include "NorvikCore/linq/Chain.h"
#include "NorvikCore/linq/LINQQueries.h"
