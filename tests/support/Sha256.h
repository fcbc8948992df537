// SHA-256 digests for comparing decoded samples with reference values. The
// digest comes from the platform's library: OpenSSL on Linux, the system's
// CNG (bcrypt) on Windows (Sha256_OpenSsl.cpp, Sha256_Bcrypt.cpp).
#pragma once

#include <cstddef>
#include <memory>
#include <string>

// A digest built up piece by piece.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Update(const void* data, size_t size);
    // The digest in lower-case hex; the object is spent afterwards.
    std::string Hex();

private:
    struct Context;
    std::unique_ptr<Context> m_context;
};

// The digest in lower-case hex.
inline std::string Sha256_Hex(const void* data, size_t size) {
    Sha256 sha;
    sha.Update(data, size);
    return sha.Hex();
}

// Lower-case hex of `size` bytes.
inline std::string Sha256_ToHex(const unsigned char* bytes, size_t size) {
    static const char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (size_t i = 0; i < size; ++i) {
        hex += kDigits[bytes[i] >> 4];
        hex += kDigits[bytes[i] & 15];
    }
    return hex;
}
