#pragma once

#include "platform/base/Descriptor.h"

#include <string>

namespace Platform
{

/** A program whose detached signature was verified. */
struct SignedProgram
{
    /** Largest program, which is kept in memory while it runs. */
    static constexpr long maxBytes = 128L * 1024 * 1024;

    /** What was verified: a copy in memory that nobody can change any more, to be executed. None when refused. */
    Descriptor content;
    std::string refusal; ///< why; empty when it is verified

    /**
        Verifies the program with the signature beside it, `path` + ".sig": raw bytes, of the program itself for Ed25519, of
        its SHA-256 digest for ECDSA (DER) and RSA (PKCS #1). Any key of the folder (*.pem, public) will do; without one
        that can be read every program is refused. The file need not be executable. Any thread.
    */
    static SignedProgram open(const std::string& path, const std::string& keyFolder);
};

} // namespace Platform
