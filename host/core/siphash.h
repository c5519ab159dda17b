// SipHash-2-4 with 128 bits of output (Aumasson, Bernstein): a keyed digest of short texts.
#ifndef HOST_CORE_SIPHASH_H
#define HOST_CORE_SIPHASH_H

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace host
{

using Digest = std::array<std::uint64_t, 2>;

/** The digest of the text under the key. Nobody without the key can find texts of equal digest. */
inline Digest sipHash128(const Digest &key, std::string_view text)
{
    std::uint64_t v0 = key[0] ^ 0x736f6d6570736575u;
    std::uint64_t v1 = key[1] ^ 0x646f72616e646f6du ^ 0xeeu;
    std::uint64_t v2 = key[0] ^ 0x6c7967656e657261u;
    std::uint64_t v3 = key[1] ^ 0x7465646279746573u;
    const auto rounds = [&](int count) {
        for (int i = 0; i < count; ++i) {
            v0 += v1;
            v1 = std::rotl(v1, 13) ^ v0;
            v0 = std::rotl(v0, 32);
            v2 += v3;
            v3 = std::rotl(v3, 16) ^ v2;
            v0 += v3;
            v3 = std::rotl(v3, 21) ^ v0;
            v2 += v1;
            v1 = std::rotl(v1, 17) ^ v2;
            v2 = std::rotl(v2, 32);
        }
    };
    const auto compress = [&](std::uint64_t word) {
        v3 ^= word;
        rounds(2);
        v0 ^= word;
    };
    const std::uint64_t length = text.size();
    static_assert(std::endian::native == std::endian::little);
    for (; text.size() >= 8; text.remove_prefix(8)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), 8);
        compress(word);
    }
    std::uint64_t last = 0;
    if (!text.empty()) {
        std::memcpy(&last, text.data(), text.size());
    }
    compress(last | length << 56);
    Digest digest = {};
    v2 ^= 0xee;
    rounds(4);
    digest[0] = v0 ^ v1 ^ v2 ^ v3;
    v1 ^= 0xdd;
    rounds(4);
    digest[1] = v0 ^ v1 ^ v2 ^ v3;
    return digest;
}

} // namespace host

#endif
