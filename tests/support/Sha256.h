// SHA-256 digests for comparing decoded samples with reference values.
#pragma once

#include <openssl/evp.h>

#include <cstdint>
#include <cstdio>
#include <string>

// The digest in lower-case hex.
inline std::string Sha256_Hex(const void* data, size_t size) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data, size, digest, &length, EVP_sha256(), nullptr);
    std::string hex;
    char two[3];
    for (unsigned i = 0; i < length; ++i) {
        std::snprintf(two, sizeof two, "%02x", digest[i]);
        hex += two;
    }
    return hex;
}
