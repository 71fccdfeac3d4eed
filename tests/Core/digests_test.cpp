/// @file
/// Digests against published vectors: FIPS 180 and its examples for SHA-1, RFC 2202 for HMAC-SHA-1.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "vexaDefs.h"
#include "vexaDigests.h"

namespace {

using Digest = unsigned char[20];

std::string hex(const Digest& digest)
{
    std::string text;
    for (const unsigned char byte : digest) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", byte);
        text += two;
    }
    return text;
}

const unsigned char* bytes(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// start, updates with pieces of the message, finish. Pieces of 0 bytes are among them.
template <typename Update>
void updateInPieces(const std::string& message, const std::vector<std::size_t>& sizes, const Update& update)
{
    std::size_t done = 0;
    for (std::size_t i = 0; done < message.size(); ++i) {
        const std::size_t size = std::min(sizes[i % sizes.size()], message.size() - done);
        ASSERT_EQ(update(bytes(message) + done, size), VEXA_SUCCESS);
        done += size;
    }
}

const std::vector<std::vector<std::size_t>> pieceSizes = {{1 << 20}, {1, 0, 63, 64, 65, 3, 127, 4097}, {55, 9}};

std::string digestOf(const std::string& message)
{
    Digest whole = {};
    EXPECT_EQ(sha1(bytes(message), message.size(), whole), VEXA_SUCCESS);
    for (const std::vector<std::size_t>& sizes : pieceSizes) {
        Digest pieced = {};
        sha1_context context;
        EXPECT_EQ(sha1_start(&context), VEXA_SUCCESS);
        updateInPieces(message, sizes, [&](auto... piece) { return sha1_update(&context, piece...); });
        EXPECT_EQ(sha1_finish(&context, pieced), VEXA_SUCCESS);
        EXPECT_EQ(hex(pieced), hex(whole));
    }
    return hex(whole);
}

std::string codeOf(const std::string& key, const std::string& message)
{
    Digest whole = {};
    EXPECT_EQ(sha1_hmac(bytes(key), key.size(), bytes(message), message.size(), whole), VEXA_SUCCESS);
    for (const std::vector<std::size_t>& sizes : pieceSizes) {
        Digest pieced = {};
        sha1_context context;
        EXPECT_EQ(sha1_hmac_start(&context, bytes(key), key.size()), VEXA_SUCCESS);
        updateInPieces(message, sizes, [&](auto... piece) { return sha1_hmac_update(&context, piece...); });
        EXPECT_EQ(sha1_hmac_finish(&context, pieced), VEXA_SUCCESS);
        EXPECT_EQ(hex(pieced), hex(whole));
    }
    return hex(whole);
}

TEST(Digests, Sha1)
{
    EXPECT_EQ(digestOf(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(digestOf("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(digestOf(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Digests, HmacSha1)
{
    std::string counted;
    for (char byte = 1; byte <= 25; ++byte) counted += byte;
    const struct {
        std::string key, message, code;
    } cases[] = {
        {std::string(20, '\x0b'), "Hi There", "b617318655057264e28bc0b6fb378c8ef146be00"},
        {"Jefe", "what do ya want for nothing?", "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
        {std::string(20, '\xaa'), std::string(50, '\xdd'), "125d7342b9ac11cd91a39af48aa17b4f63f175d3"},
        {counted, std::string(50, '\xcd'), "4c9007f4026250c6bc8414f9bf50c86c2d7235da"},
        {std::string(20, '\x0c'), "Test With Truncation", "4c1a03424b55e07fe7f27be1d58bb9324a9a5a04"},
        {std::string(80, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
         "aa4ae5e15272d00e95705637ce8a3b55ed402112"},
        {std::string(80, '\xaa'), "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
         "e8e99d0f45237d786d6bbaa7965c7808bbff1a91"},
        {"", "", "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d"},
    };
    for (const auto& [key, message, code] : cases) EXPECT_EQ(codeOf(key, message), code);
}

/// A mebibyte that does not repeat: in uneven pieces as at once.
TEST(Digests, LongMessage)
{
    std::string message(1 << 20, '\0');
    unsigned state = 1;
    for (char& byte : message) byte = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24);
    const std::string digest = digestOf(message);
    EXPECT_NE(codeOf("key", message), digest);
    message[message.size() / 2] ^= 1;
    EXPECT_NE(digestOf(message), digest);
}

TEST(Digests, TakesNoBytesFromNull)
{
    Digest digest = {};
    EXPECT_EQ(sha1(nullptr, 0, digest), VEXA_SUCCESS);
    EXPECT_EQ(hex(digest), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(sha1_hmac(nullptr, 0, nullptr, 0, digest), VEXA_SUCCESS);
    EXPECT_EQ(hex(digest), "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d");
}

TEST(Digests, Refusals)
{
    const unsigned char byte = 0;
    Digest digest = {};
    EXPECT_EQ(sha1(nullptr, 1, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1(&byte, 1, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_hmac(nullptr, 1, &byte, 1, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_hmac(&byte, 1, nullptr, 1, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_hmac(&byte, 1, &byte, 1, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_start(nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_update(nullptr, &byte, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_finish(nullptr, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_hmac_start(nullptr, &byte, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_release(nullptr), VEXA_INVALID_ARG_ERROR);

    // A context of the other kind, and one that was finished.
    sha1_context context;
    ASSERT_EQ(sha1_start(&context), VEXA_SUCCESS);
    EXPECT_EQ(sha1_hmac_update(&context, &byte, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_hmac_finish(&context, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_update(&context, nullptr, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_finish(&context, digest), VEXA_SUCCESS);
    EXPECT_EQ(sha1_update(&context, &byte, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_finish(&context, digest), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_release(&context), VEXA_SUCCESS);

    // Abandoned ones: a leak checker would tell.
    ASSERT_EQ(sha1_hmac_start(&context, &byte, 1), VEXA_SUCCESS);
    EXPECT_EQ(sha1_update(&context, &byte, 1), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(sha1_release(&context), VEXA_SUCCESS);
    EXPECT_EQ(sha1_hmac_update(&context, &byte, 1), VEXA_INVALID_ARG_ERROR);
}

}  // namespace
