// SHA-256 digests for comparing decoded samples with reference values.
#pragma once

#include <openssl/evp.h>

#include <cstdint>
#include <cstdio>
#include <string>

// A digest built up piece by piece.
class Sha256 {
public:
    Sha256() : context_(EVP_MD_CTX_new()) { EVP_DigestInit_ex(context_, EVP_sha256(), nullptr); }
    ~Sha256() { EVP_MD_CTX_free(context_); }
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Update(const void* data, size_t size) { EVP_DigestUpdate(context_, data, size); }

    // The digest in lower-case hex; the object is spent afterwards.
    std::string Hex() {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        EVP_DigestFinal_ex(context_, digest, &length);
        std::string hex;
        char two[3];
        for (unsigned i = 0; i < length; ++i) {
            std::snprintf(two, sizeof two, "%02x", digest[i]);
            hex += two;
        }
        return hex;
    }

private:
    EVP_MD_CTX* context_;
};

// The digest in lower-case hex.
inline std::string Sha256_Hex(const void* data, size_t size) {
    Sha256 sha;
    sha.Update(data, size);
    return sha.Hex();
}
