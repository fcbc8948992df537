#include "support/Sha256.h"

#include <openssl/evp.h>

struct Sha256::Context {
    EVP_MD_CTX* md = EVP_MD_CTX_new();
    ~Context() { EVP_MD_CTX_free(md); }
};

Sha256::Sha256() : m_context(std::make_unique<Context>()) {
    EVP_DigestInit_ex(m_context->md, EVP_sha256(), nullptr);
}

Sha256::~Sha256() = default;

void Sha256::Update(const void* data, size_t size) {
    EVP_DigestUpdate(m_context->md, data, size);
}

std::string Sha256::Hex() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(m_context->md, digest, &length);
    return Sha256_ToHex(digest, length);
}
