#include "support/Sha256.h"

#include <windows.h>

#include <bcrypt.h>

constexpr ULONG kDigestBytes = 32;

struct Sha256::Context {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    ~Context() {
        if (hash) BCryptDestroyHash(hash);
        if (algorithm) BCryptCloseAlgorithmProvider(algorithm, 0);
    }
};

Sha256::Sha256() : m_context(std::make_unique<Context>()) {
    BCryptOpenAlgorithmProvider(&m_context->algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    BCryptCreateHash(m_context->algorithm, &m_context->hash, nullptr, 0, nullptr, 0, 0);
}

Sha256::~Sha256() = default;

void Sha256::Update(const void* data, size_t size) {
    // The length is a ULONG: large buffers go in pieces.
    auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const ULONG piece = ULONG(size < 0x40000000 ? size : 0x40000000);
        BCryptHashData(m_context->hash, const_cast<PUCHAR>(bytes), piece, 0);
        bytes += piece;
        size -= piece;
    }
}

std::string Sha256::Hex() {
    unsigned char digest[kDigestBytes];
    BCryptFinishHash(m_context->hash, digest, kDigestBytes, 0);
    return Sha256_ToHex(digest, kDigestBytes);
}
