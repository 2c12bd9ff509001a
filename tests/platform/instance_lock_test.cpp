#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/instance_lock.h"
#include "support/temp_workdir.h"

TEST(InstanceLock, SecondHolderIsRefusedUntilReleased) {
    tfx::test::TempWorkdir dir(false);
    const auto file = dir.path() / "ZEPT.lock";
    tfx::InstanceLock first;
    ASSERT_TRUE(tfx::pf_acquireInstanceLock(file, first));

    // Another process is refused while we hold it.
    const pid_t child = ::fork();
    if (child == 0) {
        tfx::InstanceLock second;
        ::_exit(tfx::pf_acquireInstanceLock(file, second) ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);

    tfx::pf_releaseInstanceLock(first);
    tfx::InstanceLock again;
    EXPECT_TRUE(tfx::pf_acquireInstanceLock(file, again));
    tfx::pf_releaseInstanceLock(again);
}
