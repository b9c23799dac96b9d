#include "platform/base/SignedProgram.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <optional>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace Platform
{

namespace
{

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

constexpr long maxSignatureBytes = 4096;

std::string systemError(const std::string& what)
{
    return what + ": " + std::generic_category().message(errno);
}

SignedProgram refused(std::string why)
{
    return { {}, std::move(why) };
}

/** A file for reading that is really one: a pipe of that name would let us wait. `size` is its length. */
std::string openFile(const std::string& path, long maxBytes, Descriptor& file, long& size)
{
    file.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0)
        return systemError(path);
    if (!S_ISREG(status.st_mode))
        return path + ": is no file";
    if (status.st_size > maxBytes)
        return path + ": is larger than " + std::to_string(maxBytes) + " bytes";
    size = status.st_size;
    return {};
}

/** Copies at most `size` bytes, however the file grows meanwhile, and lets nobody write to the copy. */
Descriptor sealedCopy(const Descriptor& file, long size)
{
    Descriptor copy { memfd_create("program", MFD_CLOEXEC | MFD_ALLOW_SEALING) };
    while (copy && size > 0)
    {
        const auto copied = sendfile(copy.get(), file.get(), nullptr, static_cast<std::size_t>(size));
        if (copied < 0 && errno == EINTR)
            continue;
        if (copied < 0)
            return {};
        if (copied == 0)
            break; // It was shortened, which its signature tells.
        size -= copied;
    }
    if (copy && fcntl(copy.get(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL) != 0)
        return {};
    return copy;
}

/** The bytes of a sealed file. */
class Mapping
{
public:
    explicit Mapping(const Descriptor& file)
    {
        struct stat status;
        if (fstat(file.get(), &status) == 0 && status.st_size > 0)
            size = static_cast<std::size_t>(status.st_size);
        if (size > 0)
            data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping()
    {
        if (isThere())
            munmap(data, size);
    }

    bool isThere() const { return data != MAP_FAILED; }
    const unsigned char* bytes() const { return static_cast<const unsigned char*>(data); }
    std::size_t size = 0;

private:
    void* data = MAP_FAILED;
};

Key readKey(const std::filesystem::path& path)
{
    std::error_code isMissing;
    const bool isFile = std::filesystem::is_regular_file(path, isMissing); // a pipe would keep whoever opens it
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(isFile ? std::fopen(path.c_str(), "re") : nullptr,
                                                               std::fclose);
    Key key(file != nullptr ? PEM_read_PUBKEY(file.get(), nullptr, nullptr, nullptr) : nullptr, EVP_PKEY_free);
    const auto type = key != nullptr ? EVP_PKEY_get_base_id(key.get()) : EVP_PKEY_NONE;
    if (type != EVP_PKEY_ED25519 && type != EVP_PKEY_EC && type != EVP_PKEY_RSA)
        key.reset();
    return key;
}

bool isSignedBy(const Key& key, const Mapping& program, const std::vector<unsigned char>& signature)
{
    // Ed25519 takes the text itself.
    const auto* digest = EVP_PKEY_get_base_id(key.get()) == EVP_PKEY_ED25519 ? nullptr : EVP_sha256();
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    return context != nullptr && EVP_DigestVerifyInit(context.get(), nullptr, digest, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), signature.data(), signature.size(), program.bytes(), program.size) == 1;
}

/** Every *.pem of the folder that holds a key; the names of the others are added to `unusable`. */
std::vector<Key> readKeys(const std::string& folder, std::string& unusable)
{
    std::vector<Key> keys;
    std::error_code error;
    for (std::filesystem::directory_iterator each(folder, error), end; !error && each != end; each.increment(error))
    {
        if (each->path().extension() != ".pem")
            continue;
        if (auto key = readKey(each->path()))
            keys.push_back(std::move(key));
        else
            unusable += (unusable.empty() ? "" : ", ") + each->path().filename().string();
    }
    if (error)
        unusable = error.message();
    return keys;
}

/** Empty when one of the keys has signed it. */
std::string verify(const Descriptor& program, const std::vector<unsigned char>& signature, const std::string& folder)
{
    const Mapping content(program);
    if (!content.isThere())
        return content.size == 0 ? "the program is empty" : systemError("the program");
    std::string unusable;
    const auto keys = readKeys(folder, unusable);
    if (std::ranges::any_of(keys, [&](const Key& key) { return isSignedBy(key, content, signature); }))
        return {};
    const auto others = unusable.empty() ? "" : " (not usable: " + unusable + ")";
    return keys.empty() ? "there is no usable key in " + folder + others
                        : "no key in " + folder + " has signed it" + others;
}

} // namespace

SignedProgram SignedProgram::open(const std::string& path, const std::string& keyFolder)
{
    Descriptor file;
    long size = 0;
    if (auto problem = openFile(path, maxBytes, file, size); !problem.empty())
        return refused(std::move(problem));
    auto content = sealedCopy(file, size);
    if (!content)
        return refused(systemError("a copy in memory"));

    if (auto problem = openFile(path + ".sig", maxSignatureBytes, file, size); !problem.empty())
        return refused(std::move(problem));
    std::vector<unsigned char> signature(static_cast<std::size_t>(size));
    const auto count = ::read(file.get(), signature.data(), signature.size());
    if (count < 0)
        return refused(systemError(path + ".sig"));
    signature.resize(static_cast<std::size_t>(count));
    if (auto problem = verify(content, signature, keyFolder); !problem.empty())
        return refused(std::move(problem));
    return { std::move(content), {} };
}

std::size_t SignedProgram::countKeys(const std::string& keyFolder, std::string& unusable)
{
    return readKeys(keyFolder, unusable).size();
}

} // namespace Platform
