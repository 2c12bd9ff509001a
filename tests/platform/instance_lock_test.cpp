#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "platform/instance_lock.h"
#include "support/temp_workdir.h"

TEST(InstanceLock, SecondHolderIsRefusedUntilReleased) {
    tfx::test::TempWorkdir dir(false);
    const auto file = dir.path() / "ZEPT.lock";
    tfx::InstanceLock first;
    ASSERT_TRUE(tfx::pf_acquireInstanceLock(file, first));

    // A second holder in this process is refused too: the lock is not the
    // process's to take twice.
    tfx::InstanceLock second;
    EXPECT_FALSE(tfx::pf_acquireInstanceLock(file, second));

#ifndef _WIN32
    // Another process is refused while we hold it.
    const pid_t child = ::fork();
    if (child == 0) {
        tfx::InstanceLock second;
        ::_exit(tfx::pf_acquireInstanceLock(file, second) ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
#endif

    tfx::pf_releaseInstanceLock(first);
    tfx::InstanceLock again;
    EXPECT_TRUE(tfx::pf_acquireInstanceLock(file, again));
    tfx::pf_releaseInstanceLock(again);
}
