#include "platform/config/CVXIniReadWrite.h"

#include "platform/base/Descriptor.h"
#include "platform/base/Logger.h"

// Bytes stay bytes, and the header is the whole of it: the library behind it only adds the conversion of wide
// characters.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/CVXIniReadWrite", "CVXIniReadWrite" };

/** The engine's own files have a few lines. */
constexpr size_t largestFile = 64 * 1024;
constexpr mode_t fileMode = 0644;
constexpr const char* byteOrderMark = "\xEF\xBB\xBF";

juce::String reasonOf(int error)
{
    return std::generic_category().message(error);
}

/** The bytes of the file; none when it is missing, and none and a log line when it is nothing to read. */
std::string readFile(const juce::String& path)
{
    // Without waiting: behind the name may be a pipe.
    const Descriptor file { ::open(path.toRawUTF8(), O_RDONLY | O_CLOEXEC | O_NONBLOCK) };
    struct stat status
    {
    };
    if (!file || fstat(file.get(), &status) < 0)
    {
        if (errno != ENOENT)
            logger().error(path + ": " + reasonOf(errno));
        return {};
    }
    if (!S_ISREG(status.st_mode))
    {
        logger().error(path + ": no file");
        return {};
    }
    std::string bytes(largestFile + 1, '\0');
    size_t length = 0;
    while (length < bytes.size())
    {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
        {
            logger().error(path + ": " + reasonOf(errno));
            return {};
        }
        if (count == 0)
            break;
        length += static_cast<size_t>(count);
    }
    if (length > largestFile)
    {
        logger().error(path + ": more than 64 KiB are no ini file");
        return {};
    }
    bytes.resize(length);
    return bytes;
}

/** A new file that is on the disk when it answers true; otherwise `errno` says why. */
bool writeNewFile(const juce::String& path, const std::string& bytes)
{
    const Descriptor file { ::open(path.toRawUTF8(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, fileMode) };
    if (!file)
        return false;
    for (size_t done = 0; done < bytes.size();)
    {
        const ssize_t count = ::write(file.get(), bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR)
            return false;
        done += count < 0 ? 0 : static_cast<size_t>(count);
    }
    return fsync(file.get()) == 0;
}

bool syncFolder(const juce::String& path)
{
    const Descriptor folder { ::open(path.toRawUTF8(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) };
    return folder && fsync(folder.get()) == 0;
}

} // namespace

struct CVXIniReadWrite::Content
{
    std::mutex lock;
    juce::File file;
    /** A key that stands twice stays so; values are single lines. */
    CSimpleIniA ini { true, true, false };
    bool hasByteOrderMark = false;
};

CVXIniReadWrite::CVXIniReadWrite()
    : content(std::make_unique<Content>())
{
}

CVXIniReadWrite::~CVXIniReadWrite() = default;

void CVXIniReadWrite::setFileName(const juce::File& file)
{
    const std::lock_guard guard(content->lock);
    content->file = file;
    content->ini.Reset();
    const auto bytes = readFile(file.getFullPathName());
    content->hasByteOrderMark = bytes.starts_with(byteOrderMark);
    if (content->ini.LoadData(bytes) < 0)
        logger().error(file.getFullPathName() + ": no ini file");
}

int CVXIniReadWrite::getInt(const juce::String& section, const juce::String& key, int defaultValue) const
{
    const std::lock_guard guard(content->lock);
    const std::string text = content->ini.GetValue(section.toRawUTF8(), key.toRawUTF8(), "");
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc {} && end == text.data() + text.size() ? value : defaultValue;
}

void CVXIniReadWrite::setInt(const juce::String& section, const juce::String& key, int value)
{
    const std::lock_guard guard(content->lock);
    constexpr bool replacesAll = true;
    content->ini.SetValue(section.toRawUTF8(), key.toRawUTF8(), std::to_string(value).c_str(), nullptr, replacesAll);
}

bool CVXIniReadWrite::update()
{
    const std::lock_guard guard(content->lock);
    const auto path = content->file.getFullPathName();
    std::string bytes;
    if (path.isEmpty() || content->ini.Save(bytes, content->hasByteOrderMark) < 0)
    {
        logger().error(path + (path.isEmpty() ? ": no file is named" : ": cannot be put into a text"));
        return false;
    }
    // A reader, or a loss of power, finds the old file or the new one.
    const auto temporary = path + ".new";
    const bool replaced = writeNewFile(temporary, bytes) && std::rename(temporary.toRawUTF8(), path.toRawUTF8()) == 0;
    if (replaced && syncFolder(content->file.getParentDirectory().getFullPathName()))
        return true;
    logger().error(path + ": cannot be written: " + reasonOf(errno));
    if (!replaced)
        ::unlink(temporary.toRawUTF8());
    return false;
}

} // namespace Platform
