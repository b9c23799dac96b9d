#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <lmdb.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/**
    A process that stands still inside a write to a settings store, until this goes. It makes a store that is missing.
*/
class StoreLock
{
public:
    explicit StoreLock(const juce::File& folder)
    {
        folder.createDirectory();
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        process = fork();
        if (process == 0)
        {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            MDB_env* environment = nullptr;
            MDB_txn* transaction = nullptr;
            mdb_env_create(&environment);
            mdb_env_open(environment, folder.getFullPathName().toRawUTF8(), 0, 0644);
            if (mdb_txn_begin(environment, nullptr, 0, &transaction) == MDB_SUCCESS) [[maybe_unused]]
                const auto told = write(ends[1], "", 1);
            pause();
        }
        close(ends[1]);
        char held = 1;
        EXPECT_EQ(read(ends[0], &held, 1), 1);
        close(ends[0]);
    }
    ~StoreLock()
    {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }

    JUCE_DECLARE_NON_COPYABLE(StoreLock)

private:
    pid_t process = -1;
};
