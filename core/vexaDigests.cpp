/// @file
/// Message digests, by OpenSSL's libcrypto.

#include "vexaDigests.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include "vexaDefs.h"

namespace {

bool isReadable(const void* bytes, size_t length)
{
    return bytes != nullptr || length == 0;
}

int answer(int succeeded)
{
    return succeeded == 1 ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

/// A new code of SHA-1; null if there is none.
EVP_MAC_CTX* createMac()
{
    EVP_MAC* const algorithm = EVP_MAC_fetch(nullptr, OSSL_MAC_NAME_HMAC, nullptr);
    EVP_MAC_CTX* const mac = EVP_MAC_CTX_new(algorithm);
    EVP_MAC_free(algorithm);
    return mac;
}

/// The status of a finish, after which the context is empty.
int finished(sha1_context* context, int status)
{
    (void)sha1_release(context);
    return status;
}

}  // namespace

extern "C" {

int sha1_start(sha1_context* context)
{
    if (context == nullptr) return VEXA_INVALID_ARG_ERROR;
    *context = {EVP_MD_CTX_new(), nullptr};
    if (context->digest == nullptr) return VEXA_MEM_ALLOC_ERR;
    const int status = answer(EVP_DigestInit_ex2(context->digest, EVP_sha1(), nullptr));
    return status == VEXA_SUCCESS ? status : finished(context, status);
}

int sha1_update(sha1_context* context, const unsigned char* input, size_t length)
{
    if (context == nullptr || context->digest == nullptr || !isReadable(input, length)) return VEXA_INVALID_ARG_ERROR;
    return answer(EVP_DigestUpdate(context->digest, input, length));
}

int sha1_finish(sha1_context* context, unsigned char output[20])
{
    if (context == nullptr || context->digest == nullptr || output == nullptr) return VEXA_INVALID_ARG_ERROR;
    return finished(context, answer(EVP_DigestFinal_ex(context->digest, output, nullptr)));
}

int sha1(const unsigned char* input, size_t length, unsigned char output[20])
{
    if (!isReadable(input, length) || output == nullptr) return VEXA_INVALID_ARG_ERROR;
    sha1_context context = {nullptr, nullptr};
    int status = sha1_start(&context);
    if (status == VEXA_SUCCESS) status = sha1_update(&context, input, length);
    if (status == VEXA_SUCCESS) return sha1_finish(&context, output);
    return finished(&context, status);
}

int sha1_hmac_start(sha1_context* context, const unsigned char* key, size_t keyLength)
{
    if (context == nullptr || !isReadable(key, keyLength)) return VEXA_INVALID_ARG_ERROR;
    *context = {nullptr, createMac()};
    if (context->mac == nullptr) return VEXA_MEM_ALLOC_ERR;
    char digest[] = "SHA1";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
                                     OSSL_PARAM_construct_end()};
    // A null key would mean that of the time before.
    const unsigned char none = 0;
    const int status = answer(EVP_MAC_init(context->mac, key == nullptr ? &none : key, keyLength, parameters));
    return status == VEXA_SUCCESS ? status : finished(context, status);
}

int sha1_hmac_update(sha1_context* context, const unsigned char* input, size_t length)
{
    if (context == nullptr || context->mac == nullptr || !isReadable(input, length)) return VEXA_INVALID_ARG_ERROR;
    return answer(EVP_MAC_update(context->mac, input, length));
}

int sha1_hmac_finish(sha1_context* context, unsigned char output[20])
{
    if (context == nullptr || context->mac == nullptr || output == nullptr) return VEXA_INVALID_ARG_ERROR;
    return finished(context, answer(EVP_MAC_final(context->mac, output, nullptr, SHA1_DIGEST_SIZE)));
}

int sha1_hmac(const unsigned char* key, size_t keyLength, const unsigned char* input, size_t length,
              unsigned char output[20])
{
    if (!isReadable(input, length) || output == nullptr) return VEXA_INVALID_ARG_ERROR;
    sha1_context context = {nullptr, nullptr};
    int status = sha1_hmac_start(&context, key, keyLength);
    if (status == VEXA_SUCCESS) status = sha1_hmac_update(&context, input, length);
    if (status == VEXA_SUCCESS) return sha1_hmac_finish(&context, output);
    return finished(&context, status);
}

int sha1_release(sha1_context* context)
{
    if (context == nullptr) return VEXA_INVALID_ARG_ERROR;
    EVP_MD_CTX_free(context->digest);
    EVP_MAC_CTX_free(context->mac);
    *context = {nullptr, nullptr};
    return VEXA_SUCCESS;
}

}  // extern "C"
