#pragma once

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <string>
#include <vector>

/** A new key of a vendor that signs updates. */
class SigningKey
{
public:
    static SigningKey ed25519() { return SigningKey(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")); }
    static SigningKey ecdsa() { return SigningKey(EVP_EC_gen("P-256")); }
    static SigningKey rsa() { return SigningKey(EVP_RSA_gen(2048)); }

    void publish(const std::string& path) const
    {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"), std::fclose);
        EXPECT_EQ(PEM_write_PUBKEY(file.get(), key.get()), 1);
    }

    std::string signatureOf(const std::string& content) const
    {
        const auto* digest = EVP_PKEY_get_base_id(key.get()) == EVP_PKEY_ED25519 ? nullptr : EVP_sha256();
        const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
        std::vector<unsigned char> signature(1024);
        auto length = signature.size();
        EXPECT_EQ(EVP_DigestSignInit(context.get(), nullptr, digest, nullptr, key.get()), 1);
        EXPECT_EQ(EVP_DigestSign(context.get(), signature.data(), &length,
                                 reinterpret_cast<const unsigned char*>(content.data()), content.size()),
                  1);
        return { signature.begin(), signature.begin() + static_cast<std::ptrdiff_t>(length) };
    }

private:
    explicit SigningKey(EVP_PKEY* made)
        : key(made, EVP_PKEY_free)
    {
        EXPECT_NE(made, nullptr);
    }

    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key;
};
