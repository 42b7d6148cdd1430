// variable_gradients.h: the division-free rounded mean of the variable-gradients decoder.
#pragma once

#include <cstdint>

// ceil(2^K / taken) for taken = 1..8, picked lane by lane without a table or a branch: from
// the value for 8, each step down that taken reaches adds the difference to the next value.
template <unsigned K, class U>
inline U Reciprocal(U taken)
{
    auto r = [](uint32_t t) { return U(((1u << K) + t - 1) / t); };
    auto step = [&](uint32_t t) { return U(U(-U(taken <= t)) & U(r(t) - r(t + 1))); };
    return U(r(8) + step(7) + step(6) + step(5) + step(4) + step(3) + step(2) + step(1));
}

// floor((num + 2 taken) / (4 taken)) for 0 <= num <= 4 taken (2^Bits - 1) and taken = 1..8:
// u = (num + 2 taken) / 4 (truncated) is at most 8 (2^Bits - 1) + 4, and floor(u / taken) is
// u m / 2^K (truncated) with m = ceil(2^K / taken), exact while u (m taken - 2^K) < 2^K.
// Sixteen-bit lanes (8-bit samples, u <= 2044) use K = 15, m taken - 2^15 <= 6, and the high
// half of the product 2u m; 32-bit lanes (u <= 32764) use K = 17, m taken - 2^17 <= 4, and
// a product below 2^32.
template <class T>
inline T RoundedMean(T num, T taken)
{
    const T u = T((num + 2 * taken) >> 2);
    if constexpr (sizeof(T) == 2) {
        using U = uint16_t;
        return T((uint32_t(U(2 * u)) * uint32_t(Reciprocal<15>(U(taken)))) >> 16);
    } else {
        using U = uint32_t;
        return T((U(u) * Reciprocal<17>(U(taken))) >> 17);
    }
}
