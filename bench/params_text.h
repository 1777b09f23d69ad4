#pragma once

// The statement text of the params workload: 20 named markers, a literal with a colon that must not
// become one, and two variants so that every assignment really changes the text.

#include "checksum.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace quorda::bench {

inline constexpr std::array<std::string_view, 2> kParamsSql{
    "select id, qty, price, name, created from bench\n"
    "where id between :lo and :hi and qty in (:q1, :q2, :q3, :q4, :q5, :q6, :q7, :q8)\n"
    "and price > :pmin and price < :pmax and name like :n1 and name <> :n2\n"
    "and created >= :c1 and created < :c2 and (id = :k1 or id = :k2 or id = :k3 or id = :k4)\n"
    "and name <> '12:30'",
    "select id, qty, price, name, created from bench\n"
    "where id between :lo and :hi and qty in (:q1, :q2, :q3, :q4, :q5, :q6, :q7, :q8)\n"
    "and price > :pmin and price < :pmax and name like :n1 and name <> :n2\n"
    "and created >= :c1 and created < :c2 and (id = :k1 or id = :k2 or id = :k3 or id = :k4)\n"
    "and name <> '12:31'"};

inline constexpr std::array<std::string_view, 20> kParamsNames{"lo", "hi", "q1", "q2",   "q3",   "q4", "q5",
                                                               "q6", "q7", "q8", "pmin", "pmax", "n1", "n2",
                                                               "c1", "c2", "k1", "k2",   "k3",   "k4"};

// Fold of a parameter collection: its size, then the names in order.
template <class Names>
std::uint64_t FoldParamNames(const Names& List) {
    TChecksum sum;
    sum.AddInt(static_cast<std::int64_t>(List.size()));
    for (const auto& name : List)
        sum.AddText(name);
    return sum.Value();
}

} // namespace quorda::bench
