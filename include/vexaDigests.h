/// @file
/// Message digests for C and C++: SHA-1 (FIPS 180) and HMAC-SHA-1 (RFC 2104), of a whole message or piece by piece. No
/// other header includes this one, and a build may leave the functions out.
///
/// All of them return 0, or the number of a VexaStatus, which is negative: VEXA_INVALID_ARG_ERROR for a null pointer
/// (to no bytes it may be null) or a context that does not fit the call, VEXA_MEM_ALLOC_ERR, and
/// VEXA_INTERNAL_FUNCTION_CALL_ERROR if the cryptographic library refuses. A digest is 20 bytes.

#pragma once

#include <stddef.h>

#if defined(__GNUC__)
#define VEXA_API __attribute__((visibility("default")))
#else
#define VEXA_API
#endif

#if defined(__cplusplus)
extern "C" {
#endif

enum { SHA1_DIGEST_SIZE = 20 };

/// A digest on the way. A start function makes one of whatever was there before; the finish function of its kind, or
/// sha1_release, frees what it holds and leaves it empty.
typedef struct sha1_context {
    struct evp_md_ctx_st* digest;  ///< null outside sha1_start and sha1_finish
    struct evp_mac_ctx_st* mac;    ///< null outside sha1_hmac_start and sha1_hmac_finish
} sha1_context;

/// The digest of `length` bytes.
VEXA_API int sha1(const unsigned char* input, size_t length, unsigned char output[20]);

/// The same piece by piece: start, any number of updates, finish.
/// @{
VEXA_API int sha1_start(sha1_context* context);
VEXA_API int sha1_update(sha1_context* context, const unsigned char* input, size_t length);
VEXA_API int sha1_finish(sha1_context* context, unsigned char output[20]);
/// @}

/// The authentication code of `length` bytes under a key of any length.
VEXA_API int sha1_hmac(const unsigned char* key, size_t keyLength, const unsigned char* input, size_t length,
                       unsigned char output[20]);

/// The same piece by piece.
/// @{
VEXA_API int sha1_hmac_start(sha1_context* context, const unsigned char* key, size_t keyLength);
VEXA_API int sha1_hmac_update(sha1_context* context, const unsigned char* input, size_t length);
VEXA_API int sha1_hmac_finish(sha1_context* context, unsigned char output[20]);
/// @}

/// Frees what a context of either kind holds that will not be finished. An empty one is a success.
VEXA_API int sha1_release(sha1_context* context);

#if defined(__cplusplus)
}
#endif
