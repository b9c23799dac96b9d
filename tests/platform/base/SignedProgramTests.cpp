#include "platform/base/SignedProgram.h"

#include "platform/base/Process.h"
#include "platform/config/Configuration.h"
#include "platform/config/UpdateProgram.h"
#include "support/ErrorLog.h"
#include "support/Eventually.h"
#include "support/ServiceManager.h"
#include "support/SigningKey.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace Platform;
using testing::HasSubstr;

namespace
{

/** A medium with a program, and the folder of the keys. */
class SignedProgramTest : public testing::Test
{
protected:
    SignedProgramTest()
    {
        Configuration::get().mediaRoot = folder + "/media/";
        Configuration::get().updateKeys = keys;
        program = updateProgramPaths()[1].toStdString();
        std::filesystem::create_directories(std::filesystem::path(program).parent_path());
        std::filesystem::create_directories(keys);
    }
    ~SignedProgramTest() override
    {
        Configuration::get() = before;
        std::filesystem::remove_all(folder);
    }

    void write(const std::string& path, const std::string& content)
    {
        std::ofstream(path, std::ios::binary) << content;
    }

    void sign(const SigningKey& key, const std::string& content)
    {
        write(program, content);
        write(program + ".sig", key.signatureOf(content));
    }

    /** Why the program is refused. */
    std::string refusal() { return SignedProgram::open(program, keys).refusal; }

    std::string report() { return juce::File(folder + "/report").loadFileAsString().toStdString(); }

    const Configuration before = Configuration::get();
    const juce::TemporaryFile place;
    const std::string folder = place.getFile().getFullPathName().toStdString();
    const std::string keys = folder + "/keys/";
    std::string program;
    /** Tells of its start and goes on. */
    const std::string script = "#!/bin/sh\n{ echo \"$PWD|$*|${LD_LIBRARY_PATH-none}|${LANG-none}\"; } >" + folder +
                               "/new\nmv " + folder + "/new " + folder + "/report\n";
};

} // namespace

TEST_F(SignedProgramTest, AnyKeyOfTheFolderMaySign)
{
    const std::pair<const char*, SigningKey> vendors[] { { "a.pem", SigningKey::ed25519() },
                                                         { "b.pem", SigningKey::ecdsa() },
                                                         { "c.pem", SigningKey::rsa() } };
    for (const auto& [name, key] : vendors)
        key.publish(keys + name);
    write(keys + "broken.pem", "no key");
    for (const auto& [name, key] : vendors)
    {
        sign(key, script);
        EXPECT_EQ(refusal(), "") << name;
        auto signature = key.signatureOf(script);
        signature[signature.size() / 2] ^= 1;
        write(program + ".sig", signature);
        EXPECT_THAT(refusal(), HasSubstr("no key in ")) << name;
    }
    sign(SigningKey::ed25519(), script);
    EXPECT_EQ(refusal(), "no key in " + keys + " has signed it (not usable: broken.pem)");
    ASSERT_EQ(::mkfifo((keys + "pipe.pem").c_str(), 0600), 0);
    EXPECT_THAT(refusal(), HasSubstr("pipe.pem")) << "and nobody waits for its other end";
}

TEST_F(SignedProgramTest, WhatIsNotWholeIsRefused)
{
    const auto key = SigningKey::ed25519();
    sign(key, script);
    EXPECT_EQ(refusal(), "there is no usable key in " + keys);
    key.publish(keys + "vendor"); // not a .pem
    EXPECT_EQ(refusal(), "there is no usable key in " + keys);
    key.publish(keys + "vendor.pem");
    EXPECT_EQ(refusal(), "");

    write(program, script + "\n");
    EXPECT_THAT(refusal(), HasSubstr("no key in ")) << "another program";
    write(program + ".sig", "");
    EXPECT_THAT(refusal(), HasSubstr("no key in "));
    write(program + ".sig", std::string(4097, 'x'));
    EXPECT_EQ(refusal(), program + ".sig: is larger than 4096 bytes");
    std::filesystem::remove(program + ".sig");
    EXPECT_EQ(refusal(), program + ".sig: No such file or directory");
    ASSERT_EQ(mkfifo((program + ".sig").c_str(), 0600), 0);
    EXPECT_EQ(refusal(), program + ".sig: is no file") << "and nobody waits for its writer";
    std::filesystem::remove(program + ".sig");
    sign(key, "");
    EXPECT_EQ(refusal(), "the program is empty");
    std::filesystem::remove_all(keys);
    sign(key, script);
    EXPECT_THAT(refusal(), HasSubstr("there is no usable key in "));
}

/** Whoever has the medium may change it at any time. */
TEST_F(SignedProgramTest, WhatWasVerifiedIsWhatIsExecuted)
{
    const auto key = SigningKey::ed25519();
    key.publish(keys + "vendor.pem");
    sign(key, script);
    const auto opened = SignedProgram::open(program, keys);
    write(program, "#!/bin/sh\n: something else\n");
    std::string content(script.size() + 1, '\0');
    content.resize(static_cast<std::size_t>(pread(opened.content.get(), content.data(), content.size(), 0)));
    EXPECT_EQ(content, script);
    EXPECT_EQ(::write(opened.content.get(), "x", 1), -1);
    EXPECT_EQ(ftruncate(opened.content.get(), 0), -1);

    ErrorLog log;
    EXPECT_EQ(createProcess(program, {}, ProgramKind::update), nullptr);
    EXPECT_EQ(log.count("cannot start " + program + ": no key in "), 1);
}

TEST_F(SignedProgramTest, AVerifiedProgramStartsInItsFolder)
{
    const auto key = SigningKey::ecdsa();
    key.publish(keys + "vendor.pem");
    sign(key, script);
    const auto process = createProcess(program, { "-auto", "x y" }, ProgramKind::update);
    ASSERT_NE(process, nullptr);
    ASSERT_EQ(ProcessWaiter().wait({ process }), 0);
    EXPECT_EQ(process->getExitCode(), 0);
    EXPECT_THAT(report(),
                testing::StartsWith(std::filesystem::path(program).parent_path().string() + "|-auto x y|none|"));
}

/** Its user is the superuser on a unit. */
TEST_F(SignedProgramTest, TheLauncherStartsOnlySignedUpdatesInAnEnvironmentOfItsOwn)
{
    Configuration::get().updateSocket = folder + "/update";
    const auto configuration = folder + "/engine.toml";
    write(configuration, "unit.media_root = 'media'\nupdate.keys = 'keys'\n");
    ServiceManager manager(Configuration::get().updateSocket,
                           { HEADUNIT_BUILD_DIR "/bin/headunit-launch", "--config", configuration, "--update" },
                           { "PATH=/usr/bin:/bin" });
    const auto key = SigningKey::rsa();
    key.publish(keys + "vendor.pem");
    sign(key, script);
    setenv("LD_LIBRARY_PATH", "/tmp", 1);
    setenv("LANG", "C.UTF-8", 1);
    const auto process = createProcess(program, { "-auto" }, ProgramKind::update);
    unsetenv("LD_LIBRARY_PATH");
    ASSERT_NE(process, nullptr);
    ASSERT_TRUE(eventually([&] { return !report().empty(); }));
    EXPECT_EQ(report(), std::filesystem::path(program).parent_path().string() + "|-auto|none|C.UTF-8\n");

    ErrorLog log;
    write(program, script + "echo more\n");
    EXPECT_EQ(createProcess(program, {}, ProgramKind::update), nullptr);
    EXPECT_EQ(log.count("no key in "), 1);
    EXPECT_EQ(createProcess("/bin/true", {}, ProgramKind::update), nullptr);
    EXPECT_EQ(log.count("cannot start /bin/true: no update program lies there"), 1);
    write(configuration, "unit.media_root = 7\n");
    EXPECT_EQ(createProcess(program, {}, ProgramKind::update), nullptr);
    EXPECT_EQ(log.count("engine.toml:1: unit.media_root: a path is wanted"), 1);
}
